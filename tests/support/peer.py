"""A client that speaks in raw lines to the real server."""

import json
import queue
import subprocess
import threading

PATIENCE = 60  # seconds until a test gives up; nothing waits that long when all is well


def request(id_, method, params=None):
    message = {"jsonrpc": "2.0", "id": id_, "method": method}
    if params is not None:
        message["params"] = params
    return message


def call(id_, tool, arguments=None, **more):
    return request(id_, "tools/call", {"name": tool, "arguments": arguments or {}, **more})


def initialize(version="2025-11-25", client="test-client", id_="init"):
    return request(id_, "initialize", {"protocolVersion": version, "capabilities": {},
                                       "clientInfo": {"name": client, "version": "1"}})


def cancelled(id_):
    return {"jsonrpc": "2.0", "method": "notifications/cancelled", "params": {"requestId": id_}}


class Peer:
    """One server. Every line of its standard output must be one JSON object in UTF-8; anything else is a failure."""

    def __init__(self, *words, environment=None, stdout=subprocess.PIPE):
        self.process = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=stdout, stderr=subprocess.PIPE,
                                        env=environment)
        self.lines = queue.Queue()
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.errors = threading.Thread(target=self._drain, daemon=True)
        self.error_text = b""
        if stdout == subprocess.PIPE:
            self.reader.start()
        self.errors.start()

    def _read(self):
        for line in self.process.stdout:
            self.lines.put(line)
        self.lines.put(None)

    def _drain(self):
        self.error_text = self.process.stderr.read()

    def send(self, *messages):
        """Messages as objects, or lines as bytes without their end."""
        for message in messages:
            line = message if isinstance(message, bytes) else json.dumps(message).encode()
            self.process.stdin.write(line + b"\n")
        self.process.stdin.flush()

    def raw_line(self):
        line = self.lines.get(timeout=PATIENCE)
        assert line is None or line.endswith(b"\n"), f"half a line: {line[:80]!r}"
        return line

    def answer(self):
        """The next message of the server, None at its end."""
        line = self.raw_line()
        if line is None:
            return None
        message = json.loads(line.decode("utf-8", errors="strict"))
        assert isinstance(message, dict) and message["jsonrpc"] == "2.0", line[:80]
        return message

    def ask(self, message):
        self.send(message)
        return self.answer()

    def end(self):
        """Closes the input; what the server still says, and its exit status."""
        self.process.stdin.close()
        answers = []
        while (answer := self.answer()) is not None:
            answers.append(answer)
        return answers, self.process.wait(PATIENCE)

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            if stream:
                try:
                    stream.close()
                except BrokenPipeError:
                    pass
