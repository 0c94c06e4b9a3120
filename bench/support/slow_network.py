"""A network with a delay, on 127.0.0.1: passes on what comes to a port, each way a while later."""
import queue
import socket
import threading
import time


class SlowNetwork:
    """Listens as long as this process lives."""

    def __init__(self, port, delay):
        self.target, self.delay = ("127.0.0.1", port), delay
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            client, _ = self.listener.accept()
            server = socket.create_connection(self.target)
            for end in (client, server):
                end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            self._pass_on(client, server)
            self._pass_on(server, client)

    def _pass_on(self, source, target):
        waiting = queue.Queue()

        def read():
            data = b"at first"
            while data:
                try:
                    data = source.recv(65536)
                except OSError:
                    data = b""
                waiting.put((time.monotonic() + self.delay, data))

        def write():
            while True:
                due, data = waiting.get()
                time.sleep(max(0.0, due - time.monotonic()))
                try:
                    if not data:
                        target.shutdown(socket.SHUT_WR)
                        return
                    target.sendall(data)
                except OSError:
                    return

        for work in (read, write):
            threading.Thread(target=work, daemon=True).start()
