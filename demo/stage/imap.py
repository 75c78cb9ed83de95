"""A small IMAP server over TLS on loopback, over one Maildir: enough to log in, look and move messages."""

import pathlib
import re
import socket
import ssl
import subprocess
import threading

ALL = "All Mail"
QUOTED = r'"((?:[^"\\]|\\.)*)"'


def certificate(folder):
    """An authority of our own and a certificate for localhost by it: (authority, certificate, key)."""
    folder.mkdir()

    def openssl(*words):
        subprocess.run(["openssl", *words], cwd=folder, check=True, capture_output=True)
    openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=The demonstration's authority",
            "-addext", "keyUsage=critical,keyCertSign,cRLSign", "-keyout", "ca.key", "-out", "ca.crt")
    openssl("req", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost", "-keyout", "server.key", "-out", "server.csr")
    (folder / "server.ext").write_text("subjectAltName=DNS:localhost\nextendedKeyUsage=serverAuth\n")
    openssl("x509", "-req", "-in", "server.csr", "-CA", "ca.crt", "-CAkey", "ca.key", "-CAcreateserial", "-days", "2",
            "-extfile", "server.ext", "-out", "server.crt")
    return folder / "ca.crt", folder / "server.crt", folder / "server.key"


class Server:
    """Serves one login at a time. `lines` keeps what was asked, without the passwords."""

    def __init__(self, maildir, user, password, chain):
        self.maildir, self.user, self.password = pathlib.Path(maildir), user, password
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(*chain)
        self.lines = []
        for part in ("cur", "new", "tmp"):
            (self.maildir / f".{ALL}" / part).mkdir(parents=True, exist_ok=True)

    def __enter__(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self._serve, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()

    def _serve(self):
        while True:
            try:
                raw, _ = self.listener.accept()
                with self.context.wrap_socket(raw, server_side=True) as client:
                    self._session(client)
            except ssl.SSLError:
                continue  # a client that does not trust us
            except OSError:
                return

    def _session(self, client):
        client.sendall(b"* OK ready\r\n")
        files = sorted(file for part in ("cur", "new") for file in (self.maildir / part).iterdir())
        known = {uid: file for uid, file in enumerate(files, 1)}
        for line in client.makefile("r", encoding="utf-8", newline="\r\n"):
            tag, _, command = line.rstrip("\r\n").partition(" ")
            self.lines.append(re.sub(r'^(LOGIN "[^"]*") .*', r"\1 ***", command))
            rows, verdict = self._answer(command, known)
            client.sendall("".join(row + "\r\n" for row in [*rows, f"{tag} {verdict}"]).encode())
            if command == "LOGOUT":
                return

    @staticmethod
    def _message_id(file):
        field = re.search(rb"^message-id:(.*)", file.read_bytes().partition(b"\n\n")[0], re.I | re.M)
        return field.group(1) if field else b""

    def _answer(self, command, known):
        if login := re.fullmatch(f"LOGIN {QUOTED} {QUOTED}", command):
            right = [re.sub(r"\\(.)", r"\1", word) for word in login.groups()] == [self.user, self.password]
            return [], "OK welcome" if right else "NO wrong name or password"
        if command == 'LIST "" "*"':
            return ['* LIST () "/" INBOX', f'* LIST (\\All) "/" "{ALL}"'], "OK listed"
        if command == "SELECT INBOX":
            return [f"* {len(known)} EXISTS"], "OK selected"
        if search := re.fullmatch(f"UID SEARCH HEADER MESSAGE-ID {QUOTED}", command):
            wanted = search.group(1).encode()
            hits = [uid for uid, file in known.items() if wanted in self._message_id(file)]
            return [" ".join(["* SEARCH", *map(str, hits)])], "OK searched"
        if move := re.fullmatch(f"UID MOVE ([0-9]+) {QUOTED}", command):
            file = known.pop(int(move.group(1)))
            file.rename(self.maildir / f".{move.group(2)}" / "cur" / (file.name.partition(":")[0] + ":2,S"))
            return ["* OK [COPYUID 1 1 1]"], "OK moved"
        return (["* BYE"], "OK bye") if command == "LOGOUT" else ([], "BAD what?")
