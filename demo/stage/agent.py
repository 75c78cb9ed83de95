"""An agent's side of the stdio server: newline-delimited JSON-RPC on the pipes of one child."""

import json
import queue
import subprocess
import threading

SECONDS = 60  # for one answer


class Surprise(Exception):
    """Something came back that should not have."""


class Server:
    """Starts the program; ends it by closing its input, as a host does."""

    def __init__(self, program, environment, client):
        self.child = subprocess.Popen([program], env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                      text=True, encoding="utf-8")
        self.lines = queue.SimpleQueue()
        self.number = 0
        threading.Thread(target=self._read, daemon=True).start()
        self.info = self.request("initialize", {"protocolVersion": "2025-06-18", "capabilities": {},
                                                "clientInfo": {"name": client, "version": "1.0"}})
        self._send({"jsonrpc": "2.0", "method": "notifications/initialized"})

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind is not None:
            self.child.kill()
        self.child.stdin.close()
        status = self.child.wait(SECONDS)
        if kind is None and status != 0:
            raise Surprise(f"the server ended with status {status}")

    def request(self, method, params=None):
        """The result of one request. An error of the protocol is a Surprise."""
        self.number += 1
        self._send({"jsonrpc": "2.0", "id": self.number, "method": method, "params": params or {}})
        try:
            line = self.lines.get(timeout=SECONDS)
        except queue.Empty:
            raise Surprise(f"no answer to {method} within {SECONDS} s") from None
        if line is None:
            raise Surprise(f"the server ended instead of answering {method}")
        answer = json.loads(line)
        if answer.get("id") != self.number or "result" not in answer:
            raise Surprise(f"{method} was answered with {line.strip()}")
        return answer["result"]

    def call(self, tool, **arguments):
        """One tool: its text, whether the server calls it an error, and what the server says beside it."""
        result = self.request("tools/call", {"name": tool, "arguments": arguments})
        text, *beside = (part["text"] for part in result["content"])
        return text, result.get("isError", False), "\n".join(beside)

    def _send(self, message):
        self.child.stdin.write(json.dumps(message, ensure_ascii=False) + "\n")
        self.child.stdin.flush()

    def _read(self):
        for line in self.child.stdout:
            self.lines.put(line)
        self.lines.put(None)
