"""A relay between a client and an IMAP server, both over TLS. It records the client's lines and can misbehave."""

import contextlib
import socket
import ssl
import threading


class Relay:
    """`single`: answers go on byte by byte. `silent_at`: the command (by its position, 0 the greeting) that is never
    answered. `cut_at`: the command at which both connections are closed. `answers`: {position: bytes} that are sent in
    place of the server's answer; with None in place of the port there is no server at all."""

    def __init__(self, certificate, port, ca, single=False, silent_at=None, cut_at=None, answers=None):
        self.single, self.silent_at, self.cut_at, self.answers = single, silent_at, cut_at, answers or {}
        self.lines = []
        self.target, self.ca = port, ca
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(*certificate)
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]

    def __enter__(self):
        self.thread = threading.Thread(target=self._serve, daemon=True)
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        self.thread.join(10)

    def _serve(self):
        while True:
            try:
                raw, _ = self.listener.accept()
            except OSError:
                return
            try:
                with self.context.wrap_socket(raw, server_side=True) as client:
                    self._session(client)
            except (OSError, ssl.SSLError):
                pass  # the client went away, or would not have our certificate

    def _session(self, client):
        with self._connect() as server:
            self._talk(client, server)

    def _talk(self, client, server):
        step = 0
        self._answer(client, server, step, b"*")
        for line in client.makefile("rb"):
            step += 1
            self.lines.append(line.decode())
            if step == self.cut_at:
                return
            if server:
                server.sendall(line)
            self._answer(client, server, step, line.split()[0])

    def _connect(self):
        if self.target is None:
            return contextlib.nullcontext()
        context = ssl.create_default_context(cafile=self.ca)
        return context.wrap_socket(socket.create_connection(("localhost", self.target)), server_hostname="localhost")

    def _answer(self, client, server, step, tag):
        answer = self.answers.get(step)
        if answer is None and server:
            answer = b""
            while not any(line.startswith(tag + b" ") for line in answer.splitlines()) or not answer.endswith(b"\r\n"):
                answer += server.recv(65536)
        if step == self.silent_at or answer is None:
            return
        for piece in ([answer[i:i + 1] for i in range(len(answer))] if self.single else [answer]):
            client.sendall(piece)
