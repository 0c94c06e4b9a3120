#!/usr/bin/env python3
"""Qt's Firebird driver from Python as a peer: answers those requests that bench/support/worker.h describes which are
about writing out."""
import json
import sys
import time

from PyQt5.QtCore import QDateTime
from PyQt5.QtSql import QSql, QSqlDatabase, QSqlQuery


def attach(name):
    """ "host/port:/file" as Qt wants it: the file alone, or host and file with the port among the options."""
    database = QSqlDatabase.addDatabase("QIBASE")
    server, colon, file = name.partition(":")
    if colon:
        host, _, port = server.partition("/")
        database.setHostName(host)
        database.setPort(int(port))
    database.setDatabaseName(file if colon else name)
    database.setUserName("SYSDBA")
    database.setPassword("masterkey")
    if not database.open():
        raise RuntimeError(database.lastError().text())


def shown(value):
    """As a record has it."""
    if isinstance(value, QDateTime):
        return value.toString("yyyyMMdd")
    return f"{value:.2f}" if isinstance(value, float) else value


def export_records(request):
    """A loop that prints records of fixed width, as a DBF file has them behind its header."""
    start = time.monotonic()
    query = QSqlQuery()
    query.setForwardOnly(True)
    query.setNumericalPrecisionPolicy(QSql.LowPrecisionDouble)
    if not query.exec(request["sql"]):
        raise RuntimeError(query.lastError().text())
    columns = range(query.record().count())
    count = 0
    with open(request["file"], "w", encoding="latin-1") as file:
        while query.next():
            file.write(request["format"] % tuple(shown(query.value(column)) for column in columns))
            count += 1
        file.write("\x1a")
    return {"seconds": time.monotonic() - start, "rows": count}


def answer(request):
    if request["do"] == "attach":
        attach(request["database"])
        return {}
    if request["do"] == "export":
        return export_records(request)
    raise RuntimeError(f"no such request: {request['do']}")


for line in sys.stdin:
    try:
        reply = answer(json.loads(line))
    except Exception as failure:  # pylint: disable=broad-except
        reply = {"error": str(failure)}
    print(json.dumps(reply), flush=True)
