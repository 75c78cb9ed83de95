"""Another opinion on a Maildir: what the mail tools should say, told by Python's own mail library.

Shares nothing with the program under test but the files.
"""

import dataclasses
import datetime
import email
import email.policy
import pathlib
import re
import unicodedata


def folded(text):
    """The key under which texts are equal when letter case and the composition of accents are ignored."""
    return unicodedata.normalize("NFC", unicodedata.normalize("NFC", text).casefold())


@dataclasses.dataclass
class Message:
    path: pathlib.Path
    received: datetime.datetime  # local wall-clock time
    size: int
    sender: str
    subject: str
    message_id: str
    recipients: list
    attachments: int
    seen: bool
    content: str

    @property
    def date(self):
        return self.received.strftime("%Y-%m-%d %H:%M")


def _address(field):
    if field is None or not field.addresses:
        return ""
    first = field.addresses[0]
    return f"{first.display_name} <{first.addr_spec}>" if first.display_name else first.addr_spec


def _content(message):
    """The plain text of a generated message: its text/plain part."""
    part = message.get_body(preferencelist=("plain",))
    return part.get_content() if part is not None else ""


def read_message(path):
    data, status = path.read_bytes(), path.stat()
    message = email.message_from_bytes(data, policy=email.policy.default)
    flags = path.name.partition(":2,")[2]
    return Message(
        path, datetime.datetime.fromtimestamp(status.st_mtime_ns // 10**9), len(data), _address(message["from"]),
        str(message["subject"]), str(message["message-id"]).strip().strip("<>"),
        [address.addr_spec for address in message["to"].addresses] if message["to"] is not None else [],
        sum(1 for part in message.walk() if part.get_content_disposition() == "attachment"),
        path.parent.name == "cur" and "S" in flags, _content(message))


def read_account(root):
    """The mailboxes of a Maildir++ tree: name to messages, newest first."""
    boxes = {}
    for folder in [root, *sorted(path for path in root.iterdir() if path.name.startswith("."))]:
        if not (folder / "cur").is_dir():
            continue
        name = "INBOX" if folder == root else folder.name[1:].replace(".", "/")
        messages = [read_message(path) for part in ("cur", "new") for path in (folder / part).iterdir()]
        boxes[name] = sorted(messages, key=lambda one: one.path.stat().st_mtime_ns, reverse=True)
    return boxes


def _day(text):
    return datetime.datetime.strptime(text, "%Y-%m-%d")


def matches(message, criteria, now):
    """One message against the criteria of a call, each on its own."""
    def holds(key, value):
        if key == "from":
            return folded(value) in folded(message.sender)
        if key == "to":
            return any(folded(value) in folded(one) for one in message.recipients)
        if key == "before":
            return "olderThan" in criteria or message.received < _day(value)
        if key == "after":
            return message.received > _day(value)
        if key == "olderThan":
            return message.received < now - datetime.timedelta(days=int(value))
        if key == "minSize":
            limit = int(float(value) * 1048576)
            return limit <= 0 or message.size >= limit
        if key == "maxSize":
            limit = int(float(value) * 1048576)
            return limit <= 0 or message.size <= limit
        if key == "subject":
            return folded(value) == folded(message.subject)
        if key == "subjectContains":
            return folded(value) in folded(message.subject)
        if key == "status":
            return {"read": message.seen, "unread": not message.seen}.get(value.lower(), True)
        if key == "hasAttachment":
            return message.attachments > 0
        raise KeyError(key)

    return all(holds(key, value) for key, value in criteria.items())


def cleaned(text):
    """The cleaning of a body without markup, in Python's own regular expressions."""
    text = text.replace("\r\n", "\n").replace("\r", "\n")
    for pattern, by in ((r"[ \t]+\n", "\n"), (r"(?m)^[ \t]+", ""), (r"[ \t]{2,}", " "), (r"\n{3,}", "\n\n")):
        text = re.sub(pattern, by, text)
    tails = (r"(?m)^On .{0,200}? wrote:\s*$", r"(?m)^Le .{0,200}?(a écrit|écrit)\s*:\s*$", r"(?m)^>.*$",
             r"(?i)-----Original Message-----", r"(?i)-----Message d'origine-----", "_" * 32)
    ends = [found.start() for tail in tails if (found := re.search(tail, text))]
    text = text[:min(ends, default=len(text))]
    text = text.partition("\n-- \n")[0].strip()
    data = text.encode()
    if len(data) <= 8192:
        return text
    kept = data[:8192].decode(errors="ignore")
    return f"{kept}\n\n[truncated: {len(data) - len(kept.encode())} more bytes]"
