"""What all benchmarks of one call of bench.sh share: programs, the private engine and server, databases, options."""
import os
import shutil
import sys

from bench.support.processes import SERVER_CPU, Failure, Process
from bench.support.slow_network import SlowNetwork

HERE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
NODE_MODULE = os.path.join(HERE, "peers", "node", "node_modules", "node-firebird")

EMBEDDED, TCP, SLOW = "embedded", "TCP", "TCP, 2 ms each way"
SLOW_SECONDS = 0.002


class Stage:
    """Sizes and runs come from the options; databases are copies of one that is made once."""

    def __init__(self, programs, options, server):
        self.programs = programs
        self.options = options
        self.host = self._start([os.path.join(programs, "zmfb_bench_worker")], {}, cpu=SERVER_CPU)
        made = self.host.ask("stage", server=server)
        self.folder = made["folder"]
        self.empty = made["empty"]
        self.client_version = made["client"]
        self.server = made.get("host")
        self.server_process = made.get("server_process")
        self.environment = {"FIREBIRD": made["environment"], "FIREBIRD_LOCK": made["environment"] + "/lock"}
        self.slow = None
        self.tool = os.path.join(os.path.dirname(os.path.abspath(programs)), "bin", "zmfb")
        self.numbers = iter(range(1, 1 << 30))

    def _start(self, command, environment, **pinning):
        smoke = ["--smoke"] if self.options.smoke and command[0].startswith(self.programs) else []
        return Process(command + smoke, environment, **pinning)

    def worker(self):
        """A process that has our own code and the bare client."""
        return self._start([os.path.join(self.programs, "zmfb_bench_worker")], self.environment)

    def peer(self, name):
        commands = {
            "SOCI": [os.path.join(self.programs, "zmfb_bench_soci")],
            "SOCI into structs": [os.path.join(self.programs, "zmfb_bench_soci")],
            "Qt QIBASE": [os.path.join(self.programs, "zmfb_bench_qt")],
            "DBD::Firebird": ["perl", os.path.join(HERE, "peers", "dbd.pl")],
            "PyQt": ["/usr/bin/python3", os.path.join(HERE, "peers", "pyqt.py")],
            "node-firebird": ["node", os.path.join(HERE, "peers", "node", "peer.js")],
        }
        return self._start(commands[name], self.environment)

    def peers(self, names):
        """Those of the peers that this call is to have."""
        return [name for name in names if name in self.options.peers]

    def progress(self, text):
        if not self.options.smoke:
            print(f"  {text}", file=sys.stderr, flush=True)

    def file(self, name):
        return os.path.join(self.folder, name)

    def folder_of(self, name):
        folder = self.file(name)
        os.makedirs(folder, exist_ok=True)
        return folder

    def copy(self, source=None):
        """A database file of one's own: a copy of `source`, or of an empty one with what the driver needs."""
        copy = self.file(f"{next(self.numbers)}.fdb")
        shutil.copyfile(source or self.empty, copy)
        os.chmod(copy, 0o666)
        return copy

    def name(self, file, where):
        """What to attach with. One file must not be open embedded and on the server at once."""
        if where == EMBEDDED:
            return file
        if self.server is None:
            raise Failure("no server was started")
        return (self._slow_server() if where == SLOW else self.server) + file

    def _slow_server(self):
        """The server behind a network that delays what is sent."""
        host, port = self.server.rstrip(":").split("/")
        self.slow = self.slow or SlowNetwork(int(port), SLOW_SECONDS)
        return f"{host}/{self.slow.port}:"

    def wheres(self):
        return [EMBEDDED, TCP]

    def close(self):
        self.host.close()
