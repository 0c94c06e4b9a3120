"""A terminal of a walk-through: a shell that is given commands, and what it writes."""

import os
import pty
import queue
import re
import select
import subprocess
import threading
import time

END = "=== the command is done ==="
PATIENCE = 60


class Terminal:
    """One bash, and the `zmfb shell` that may be running in it."""

    def __init__(self, folder, environment):
        self.bash = subprocess.Popen(
            ["bash", "--norc", "--noprofile"], cwd=folder, env=environment, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, encoding="utf-8")
        self.written = queue.Queue()
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for line in self.bash.stdout:
            self.written.put(line.rstrip("\n"))
        self.written.put(None)

    def _send(self, text):
        self.bash.stdin.write(text)
        self.bash.stdin.flush()

    def _lines_until_end(self):
        lines, until = [], time.monotonic() + PATIENCE
        while True:
            line = self.written.get(timeout=max(0.1, until - time.monotonic()))
            if line is None:
                raise RuntimeError("the shell has ended")
            before, end, status = line.partition(END)
            if end:
                return lines + ([before] if before else []), status
            lines.append(line)

    def run(self, command):
        """Runs a command; (its lines, its exit status)."""
        self._send(f"{{ (exit ${{status:-0}})\n{command}\n}} </dev/null; status=$?; echo '{END}'$status\n")
        lines, status = self._lines_until_end()
        return lines, int(status)

    def start_shell(self, command):
        """Starts a `zmfb shell`, which takes the further lines; what it wrote first."""
        self._send(f"{command}; echo '{END}'$?\n")
        return self.type("")

    def type(self, line):
        """A line for the `zmfb shell`; what it wrote."""
        self._send(f'{line}\nremovezerobytes("{END}")\n')
        lines, _ = self._lines_until_end()
        return lines[:-1] if lines and lines[-1] == '"' else lines

    def leave_shell(self, line=".quit"):
        self._send(f"{line}\n")
        lines, status = self._lines_until_end()
        return lines, int(status)

    def close(self):
        self.bash.stdin.close()
        try:
            self.bash.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self.bash.kill()
            self.bash.wait()
        self.reader.join(timeout=10)
        self.bash.stdout.close()


def environment(home):
    """That of a user with that home folder, and programs in its folder `bin`; log and temporary files go there."""
    unwanted = ["FIREBIRD", "FIREBIRD_LOCK", "ZMFB_DB", "XDG_CACHE_HOME", "XDG_STATE_HOME", "ENV", "BASH_ENV"]
    if "ZMFB_DOCS_SERVER" not in os.environ:
        unwanted += ["ISC_USER", "ISC_PASSWORD"]
    kept = {name: value for name, value in os.environ.items() if name not in unwanted}
    return {**kept, "HOME": str(home), "PATH": f"{home}/bin:{kept.get('PATH', '/usr/bin:/bin')}", "LC_ALL": "C.UTF-8",
            "NO_COLOR": "1", "TMPDIR": str(home), "ZMFB_TEST_LOG": f"{home}/zmrddfire.log"}


def memory_folder():
    """Where temporary folders cost no disk; None for the usual place."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


ESCAPE = re.compile(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|\r|\a")


def on_screen(command, answers, folder, environment):
    """Runs a command on a terminal of its own; `answers` are typed, one at each question ("[y/N] ").

    Returns what stands on the screen, what was typed included, and the exit status.
    """
    screen, keyboard = pty.openpty()
    program = subprocess.Popen(["bash", "--norc", "--noprofile", "-c", command], cwd=folder,
                               env={**environment, "TERM": "xterm"}, stdin=keyboard, stdout=keyboard,
                               stderr=keyboard, start_new_session=True)
    os.close(keyboard)
    written, waiting, until = b"", list(answers), time.monotonic() + PATIENCE
    while time.monotonic() < until:
        ready, _, _ = select.select([screen], [], [], 1)
        try:
            some = os.read(screen, 65536) if ready else None
        except OSError:
            some = b""
        if some == b"":
            break
        written += some or b""
        if waiting and some and written.endswith(b"[y/N] "):
            os.write(screen, waiting.pop(0).encode() + b"\n")
    os.close(screen)
    try:
        status = program.wait(timeout=1)
    except subprocess.TimeoutExpired:
        program.kill()
        status = program.wait()
    return ESCAPE.sub("", written.decode("utf-8", "replace")).rstrip("\n").split("\n"), status
