"""A mail server on loopback that keeps what it gets: `with Sink() as sink`. It refuses recipients at refused.test."""

import asyncio
import threading

from aiosmtpd.smtp import SMTP


class Sink:
    def __init__(self):
        self.mails = []  # (sender, recipients, bytes)
        self.loop = asyncio.new_event_loop()

    async def handle_RCPT(self, server, session, envelope, address, options):
        if address.endswith("@refused.test"):
            return "550 no such person here"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.mails.append((envelope.mail_from, sorted(envelope.rcpt_tos), envelope.original_content))
        return "250 kept"

    def __enter__(self):
        listening = self.loop.create_server(lambda: SMTP(self, data_size_limit=1 << 30, loop=self.loop), "127.0.0.1", 0)
        self.server = self.loop.run_until_complete(listening)
        self.port = self.server.sockets[0].getsockname()[1]
        self.thread = threading.Thread(target=self.loop.run_forever, daemon=True)
        self.thread.start()
        return self

    def __exit__(self, *_):
        """Nobody answers at the port from now on. May be called again."""
        if self.thread.is_alive():
            self.loop.call_soon_threadsafe(self.server.close)
            self.loop.call_soon_threadsafe(self.loop.stop)
            self.thread.join(10)
            self.loop.close()
