"""An archive over IMAP beside the same conversation by a client that only says it."""

import json
import pathlib
import shutil
import subprocess
import sys

from figures import Figure

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/support"))

from dovecot import PASSWORD, USER, WITH_ALL, Authority, Dovecot  # noqa: E402
from keyring import Keyring  # noqa: E402
from relay import Relay  # noqa: E402

MESSAGES, EVERY, ACCOUNT = 2_000, 4, "Bench"  # one message in four is archived
ALL = "[Gmail]/Tous les messages"


def message(number):
    subject = "Harbour news" if number % EVERY == 0 else "Something else"
    return (f"From: ann@mail.example.org\r\nTo: {USER}\r\nSubject: {subject} {number}\r\n"
            f"Date: Mon, 2 Mar 2026 10:00:00 +0000\r\nMessage-ID: <m{number}@mail.example.org>\r\n\r\n"
            + f"Line of message {number}\r\n" * 100).encode()


class Case:
    """A desk, and a server that holds the same messages; both know their mail already."""

    def __init__(self, bench, keyring, server, authority):
        environment, self.folder = bench.desk("archive")
        self.environment = environment | keyring.environment | {"SSL_CERT_FILE": str(authority.ca)}
        self.program, self.server = bench.helpers / "mervo", server
        (self.folder / "mervo").mkdir()
        messages = [message(number) for number in range(MESSAGES)]
        shutil.rmtree(self.folder / "mail")
        for part in ("cur", "new", "tmp"):
            (self.folder / "mail" / part).mkdir(parents=True)
        for number, text in enumerate(messages):
            (self.folder / f"mail/cur/{1700000000 + number}.M{number}.desk:2,S").write_bytes(text)
        server.deliver(messages)
        self.call = [self.program, "run", "mail.archive", f"account={ACCOUNT}", "subjectContains=harbour"]
        subprocess.run([self.program, "secret", "set", USER], env=self.environment, input=PASSWORD, text=True, check=True,
                       stdout=subprocess.DEVNULL)

    def uses(self, port):
        account = {"mailAccountName": ACCOUNT, "email": USER, "host": "localhost", "port": port}
        (self.folder / "mervo/config.json").write_text(json.dumps({"autonomyMode": "yolo", "imapAccounts": [account]}),
                                                       encoding="utf-8")

    def record(self, authority, bare):
        """The conversation of one archive, in a file. Before it the mail is put aside as `fresh` brings it back."""
        look, script = self.folder / "look", self.folder / "said"
        look.write_text(f'a1 LOGIN "{USER}" "a\\"b\\\\c d"\r\na2 SELECT INBOX\r\na3 LOGOUT\r\n', encoding="utf-8")
        subprocess.run([bare, str(self.server.port), look], env=self.environment, check=True)
        subprocess.run(["cp", "-a", self.server.mail, self.server.folder / "source"], check=True)
        with Relay(authority.certificate("localhost"), self.server.port, authority.ca) as relay:
            self.uses(relay.port)
            subprocess.run(self.call, env=self.environment, check=True, stdout=subprocess.DEVNULL)
            script.write_bytes("".join(relay.lines).encode())
        self.insist()
        self.uses(self.server.port)
        return script

    def fresh(self):
        mail = self.server.mail
        return f"rm -rf {mail} && cp -a {self.server.folder}/source {mail}"

    def insist(self):
        moved, left = len(self.server.folder_files(ALL)), len(self.server.folder_files("INBOX"))
        if (moved, left) != (MESSAGES // EVERY, MESSAGES - MESSAGES // EVERY):
            sys.exit(f"bench: the archive left {left} and moved {moved}")


def archive(bench):
    place = bench.data / "imap"
    shutil.rmtree(place, ignore_errors=True)
    authority = Authority(place / "tls")
    authority.certificate("localhost")
    bare = bench.programs / "bare-imap"
    with Keyring(place / "keyring") as keyring, Dovecot(place / "s", authority, WITH_ALL) as server:
        case = Case(bench, keyring, server, authority)
        said = case.record(authority, bare)
        got = bench.pairs(case.environment, {"archive": ["after", case.fresh(), *case.call],
                                             "bare": ["after", case.fresh(), bare, server.port, said]}, 11)
        case.insist()
    return [Figure(f"`mervo run mail.archive` of {MESSAGES // EVERY} messages, {MESSAGES:,} in the inbox",
                   got["archive"]["wall"], got["bare"]["wall"], "the same commands by a bare client", 1.2)]
