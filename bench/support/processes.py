"""The processes that do the work: started, pinned to a processor, asked over their standard input and output."""
import json
import os
import subprocess
import tempfile
import time


def processors():
    """The processor of the clients and that of the server; one and the same where there is only one."""
    usable = sorted(os.sched_getaffinity(0))
    return usable[0], usable[1 if len(usable) > 1 else 0]


CLIENT_CPU, SERVER_CPU = processors()


class Failure(Exception):
    """Something that ends the benchmarks: an answer that is wrong, a process that fails."""


def memory_of(process):
    """Resident memory of the process with that number, now and at its peak, in bytes."""
    kilobytes = {}
    with open(f"/proc/{process}/status", encoding="ascii") as status:
        for line in status:
            if line.startswith(("VmRSS", "VmHWM")):
                kilobytes[line[:5]] = int(line.split()[1])
    return kilobytes["VmRSS"] * 1024, kilobytes["VmHWM"] * 1024


class Process:
    """One process that answers requests, each a JSON object on a line."""

    def __init__(self, command, environment, cpu=CLIENT_CPU):
        self.name = " ".join(os.path.basename(word) for word in command[:2])
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.errors, text=True,
            env={**os.environ, **environment}, preexec_fn=lambda: os.sched_setaffinity(0, {cpu}))

    def ask(self, what, **fields):
        self.send(what, **fields)
        return self.receive(what)

    def send(self, what, **fields):
        try:
            self.process.stdin.write(json.dumps({"do": what, **fields}) + "\n")
            self.process.stdin.flush()
        except BrokenPipeError:
            pass

    def receive(self, what):
        line = self.process.stdout.readline()
        if not line:
            self.errors.seek(0)
            raise Failure(f"{self.name} ended during {what}: {self.errors.read().decode(errors='replace').strip()}")
        reply = json.loads(line)
        if "error" in reply:
            raise Failure(f"{self.name}: {what}: {reply['error']}")
        return reply

    def memory(self):
        return memory_of(self.process.pid)

    def close(self):
        """Ends it. Returns what it said, unless it ended well."""
        self.process.stdin.close()
        try:
            self.process.wait(60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        self.errors.seek(0)
        said = self.errors.read().decode(errors="replace").strip()
        self.errors.close()
        return "" if self.process.returncode == 0 else f"{self.name} ends with {self.process.returncode}: {said}"

    def __enter__(self):
        return self

    def __exit__(self, failure, *_):
        said = self.close()
        if said and failure is None:
            raise Failure(said)


def timed(command, environment):
    """Runs a command to its end. Returns the seconds that it took, and its resident memory at its peak in MB, which
    a process between tells: the system counts what a process was forked from as its own."""
    with tempfile.NamedTemporaryFile("r") as kilobytes:
        start = time.monotonic()
        done = subprocess.run(
            ["/usr/bin/time", "-q", "-f", "%M", "-o", kilobytes.name, *command], stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False, env={**os.environ, **environment},
            preexec_fn=lambda: os.sched_setaffinity(0, {CLIENT_CPU}))
        seconds = time.monotonic() - start
        if done.returncode != 0:
            raise Failure(f"{' '.join(command)} ends with {done.returncode}: {done.stderr.decode(errors='replace')}")
        return seconds, int(kilobytes.read()) / 1024
