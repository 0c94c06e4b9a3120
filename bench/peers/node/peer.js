// node-firebird as a peer: answers the requests that bench/support/worker.h describes. It speaks the wire protocol
// itself and so reaches servers only.
'use strict';
const readline = require('readline');
const Firebird = require('node-firebird');

let database = null;
let held = null;

function attach(name) {
    const [, host, port, file] = /^(.*?)\/(\d+):(.*)$/.exec(name);
    const options = {host, port: Number(port), database: file, user: 'SYSDBA', password: 'masterkey'};
    return new Promise((resolve, reject) => {
        Firebird.attach(options, (error, attached) => (error ? reject(error) : resolve((database = attached))));
    });
}

// Now and then a server takes the right password for a wrong one from this peer, and the next time for what it is.
async function attachAtLast(name) {
    for (let left = 4; left > 0; --left) {
        try {
            return await attach(name);
        } catch (error) {
            if (!/user name and password/.test(error.message)) throw error;
        }
    }
    return attach(name);
}

// Rows as arrays of values, in a transaction of their own that only reads.
function readPeople(sql) {
    return new Promise((resolve, reject) => {
        database.transaction(Firebird.ISOLATION_REPEATABLE_READ, (failure, transaction) => {
            if (failure) return reject(failure);
            transaction.execute(sql, [], (error, rows) => {
                transaction.commit(() => (error ? reject(error) : resolve(rows)));
            });
        });
    });
}

function sumsOf(rows, seconds) {
    let id = 0;
    let credit = 0;
    for (const row of rows) {
        id += row[0];
        if (row[3] !== null) credit += Math.round(row[3] * 100);
    }
    return {seconds, rows: rows.length, id, credit};
}

const two = (number) => String(number).padStart(2, '0');
// A timestamp as the client's clock shows it, to the millisecond that a Date holds.
function stamp(date) {
    return `${date.getFullYear()}-${two(date.getMonth() + 1)}-${two(date.getDate())} ` +
        `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}.` +
        String(date.getMilliseconds()).padStart(3, '0');
}

const commands = {
    attach: async (request) => { await attachAtLast(request.database); return {}; },
    detach: () => new Promise((resolve) => database.detach(() => resolve({}))),
    select: async (request) => {
        const start = process.hrtime.bigint();
        const rows = await readPeople(request.sql);
        return sumsOf(rows, Number(process.hrtime.bigint() - start) / 1e9);
    },
    hold: async (request) => { held = await readPeople(request.sql); return sumsOf(held, 0); },
    sample: async (request) => {
        const rows = await readPeople(request.sql);
        return {rows: rows.map((row) => row.map((value) => (value instanceof Date ? stamp(value) : value)))};
    },
};

async function main() {
    for await (const line of readline.createInterface({input: process.stdin})) {
        let reply;
        try {
            const request = JSON.parse(line);
            reply = await commands[request.do](request);
        } catch (error) {
            reply = {error: String((error && error.message) || error)};
        }
        process.stdout.write(JSON.stringify(reply) + '\n');
    }
    process.exit(0);
}

main();
