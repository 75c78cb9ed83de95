"""Dovecot, on a loopback port with TLS: `with Dovecot(folder, authority) as server`; or over any Maildir, by pipe."""

import getpass
import grp
import os
import pathlib
import pwd
import socket
import subprocess
import tempfile
import time

USER, PASSWORD = "claire@example.test", 'a"b\\c d'

CONFIG = """
protocols = imap
listen = 127.0.0.1
base_dir = {at}/run
state_dir = {at}/state
log_path = {at}/dovecot.log
ssl = required
ssl_cert = <{at}/tls/localhost.crt
ssl_key = <{at}/tls/localhost.key
disable_plaintext_auth = yes
mail_location = maildir:{mail}
first_valid_uid = 0
mail_access_groups =
{identity}
passdb {{
  driver = passwd-file
  args = scheme=PLAIN username_format=%u {at}/users
}}
userdb {{
  driver = static
  args = uid={owner} gid={group} home={at}/home
}}
namespace inbox {{
  inbox = yes
  separator = /
  {folders}
}}
service imap-login {{
  {chroot}
  inet_listener imap {{
    port = 0
  }}
  inet_listener imaps {{
    address = 127.0.0.1
    port = {port}
    ssl = yes
  }}
}}
service anvil {{
  {chroot}
}}
"""

WITH_ALL = """
  mailbox "[Gmail]/Tous les messages" {
    special_use = \\All
    auto = subscribe
  }"""
WITHOUT_ALL = """
  mailbox "[Gmail]/All Mail" {
    auto = subscribe
  }"""
PLAIN_ALL = """
  mailbox "Alles" {
    special_use = \\All
    auto = subscribe
  }"""


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


class Authority:
    """A private certificate authority, and certificates by it. `ca` is what a client has to trust."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self.ca = self.folder / "ca.crt"
        self._openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "30", "-subj", "/CN=Test authority",
                      "-addext", "keyUsage=critical,keyCertSign,cRLSign", "-keyout", "ca.key", "-out", "ca.crt")

    def certificate(self, name, days=30):
        """name.crt and name.key, good for that host name; with days=-1 they ended yesterday."""
        self._openssl("req", "-newkey", "rsa:2048", "-nodes", "-subj", f"/CN={name}", "-keyout", f"{name}.key",
                      "-out", f"{name}.csr")
        extensions = self.folder / f"{name}.ext"
        extensions.write_text(f"subjectAltName=DNS:{name}\nextendedKeyUsage=serverAuth\nbasicConstraints=CA:FALSE\n")
        self._openssl("x509", "-req", "-in", f"{name}.csr", "-CA", "ca.crt", "-CAkey", "ca.key", "-CAcreateserial",
                      "-days", str(days), "-extfile", extensions.name, "-out", f"{name}.crt")
        return self.folder / f"{name}.crt", self.folder / f"{name}.key"

    def _openssl(self, *words):
        subprocess.run(["openssl", *words], cwd=self.folder, check=True, capture_output=True)


class Dovecot:
    def __init__(self, folder, authority, folders=WITH_ALL):
        self.folder, self.mail = pathlib.Path(folder), pathlib.Path(folder) / "mail"
        self.port = free_port()
        self.mail.mkdir(parents=True)
        (self.folder / "home").mkdir()
        root = os.geteuid() == 0
        owner = "nobody" if root else getpass.getuser()
        account = pwd.getpwnam(owner)
        tls = self.folder / "tls"
        tls.mkdir()
        for source in authority.folder.glob("localhost.*"):
            (tls / source.name).write_bytes(source.read_bytes())
        (self.folder / "users").write_text(f"{USER}:{{PLAIN}}{PASSWORD}\n")
        (self.folder / "users").chmod(0o644)
        group = grp.getgrgid(account.pw_gid).gr_name
        identity = "" if root else (f"default_internal_user = {owner}\ndefault_internal_group = {group}\n"
                                    f"default_login_user = {owner}")
        (self.folder / "dovecot.conf").write_text(CONFIG.format(
            at=self.folder, mail=self.mail, identity=identity, owner=account.pw_uid, group=account.pw_gid,
            folders=folders, port=self.port, chroot="" if root else "chroot ="))
        for path in [self.folder, *self.folder.parents]:
            if os.stat(path).st_uid == os.geteuid() and path.name:
                path.chmod(path.stat().st_mode | 0o011)
        if root:
            for path in (self.mail, self.folder / "home"):
                os.chown(path, account.pw_uid, account.pw_gid)
        self.owner = (account.pw_uid, account.pw_gid) if root else None

    def deliver(self, messages):
        """Puts messages (bytes) into the server's INBOX."""
        for part in ("cur", "new", "tmp"):
            (self.mail / part).mkdir(exist_ok=True)
        for number, message in enumerate(messages):
            (self.mail / "cur" / f"{1700000000 + number}.M{number}.test:2,S").write_bytes(message)
        if self.owner:
            for path in [self.mail, *self.mail.rglob("*")]:
                os.chown(path, *self.owner)

    def folder_files(self, name):
        """The messages of a server folder, as bytes."""
        place = self.mail if name == "INBOX" else self.mail / ("." + name.replace("/", "."))
        return sorted(file.read_bytes() for part in ("cur", "new") for file in (place / part).glob("*"))

    def __enter__(self):
        self.process = subprocess.Popen(["/usr/sbin/dovecot", "-F", "-c", self.folder / "dovecot.conf"],
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        deadline = time.monotonic() + 20
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return self
            except OSError:
                if time.monotonic() > deadline or self.process.poll() is not None:
                    log = self.folder / "dovecot.log"
                    raise RuntimeError("dovecot did not start: " + (log.read_text() if log.exists() else ""))
                time.sleep(0.05)

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(20)


class LocalDovecot:
    """The IMAP server over one Maildir, by pipe and by its administration program. Run by root it works as another user,
    because it refuses to work as root."""

    def __init__(self, maildir):
        self.folder, self.maildir = tempfile.TemporaryDirectory(prefix="mervo-dovecot-"), maildir
        self.user = []
        place = pathlib.Path(self.folder.name)
        if os.geteuid() == 0:
            self.user = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
            os.chown(place, 65534, 65534)
            maildir.parent.chmod(0o711)
        self.config = place / "dovecot.conf"
        self.config.write_text(f"""protocols = imap
base_dir = {place}/run
state_dir = {place}/state
log_path = {place}/log
ssl = no
mail_location = maildir:{maildir}:INDEX={place}/index
first_valid_uid = 0
first_valid_gid = 0
mail_uid = {65534 if self.user else os.getuid()}
mail_gid = {65534 if self.user else os.getgid()}
namespace inbox {{
  inbox = yes
  separator = /
}}
""")
        self.own()

    def own(self):
        if self.user:
            subprocess.run(["chown", "-R", "65534:65534", self.maildir], check=True)

    def imap(self):
        return ["env", f"HOME={self.folder.name}", *self.user, "/usr/lib/dovecot/imap", "-c", str(self.config)]

    def doveadm(self, *words):
        self.own()
        return subprocess.run([*self.user, "doveadm", "-c", self.config, *words], capture_output=True, text=True,
                              check=True, env=os.environ | {"USER": "someone", "HOME": self.folder.name}).stdout

    def close(self):
        self.folder.cleanup()
