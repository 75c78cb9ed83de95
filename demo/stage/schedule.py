"""Two automations: a script that fails and says so by mail, and an agent that asks and is answered. Both are run as their
jobs would run them at their times; only the agent's own program is a stand-in."""

from stage.agent import Surprise
from stage.desk import ADDRESS

CLIENT = """#!/bin/sh
# Stands in for an agent's program: keeps its prompt, asks once, and says that it is done.
cat > "$HOME/prompt"
[ -e "$HOME/asked" ] || mervo run ask text="Shall I unsubscribe from the harbour's newsletter?" > "$HOME/asked"
mervo auto-done
"""


class Schedule:
    def __init__(self, morning):
        self.desk, self.page, self.call, self.shell = morning.desk, morning.page, morning.call, morning.shell

    def play(self):
        self.desk.configure(notifyEmail=ADDRESS)
        client = self.desk.user / "bin/claude"
        client.parent.mkdir()
        client.write_text(CLIENT, encoding="utf-8")
        client.chmod(0o755)
        self.fails()
        self.asks()

    def newest(self, subject):
        """The message in the inbox whose subject begins like this; there is one."""
        found = [message for message in map(self.desk.message, self.desk.files("INBOX"))
                 if message["Subject"].startswith(subject)]
        if len(found) != 1:
            raise Surprise(f"{len(found)} messages in the inbox begin with {subject}")
        return found[0]

    def show(self, message):
        self.page.output(f"From: {message['From']}\nTo: {message['To']}\nSubject: {message['Subject']}\n\n"
                         + message.get_content().strip())

    def fails(self):
        self.page.heading("It works on a schedule: a script that fails sends a mail")
        self.call("auto.add", name="backup", at="02:30", notifyOnFail="true",
                  command="echo copying; ls /the/other/disk; exit 3")
        self.page.say("At half past two its job runs the next line; here it runs at once:")
        self.shell("mervo", "auto-run", "backup")
        self.page.say("It failed. In the owner's inbox lies:")
        self.show(self.newest("[rondel] backup failed (exit 3)"))

    def asks(self):
        self.page.heading("An agent on a schedule asks, and finds the answer in its next prompt")
        self.call("auto.add", name="triage", every="120", background="true", prompt="Sort the newsletters.")
        self.shell("mervo", "auto-run", "triage")
        question = self.newest("[mervo#")
        self.show(question)
        self.page.owner("replies: Yes, but keep the tide tables.")
        (self.desk.maildir / "new/reply.1").write_text(
            f"From: Alex Martin <{ADDRESS}>\nTo: {ADDRESS}\nSubject: Re: {question['Subject']}\n"
            f"In-Reply-To: {question['Message-ID']}\n\nYes, but keep the tide tables.\n\n> Shall I?\n", encoding="utf-8")
        self.shell("mervo", "run", "ask.harvest")
        for answered in (True, False):
            self.shell("mervo", "auto-run", "triage")
            prompt = (self.desk.user / "prompt").read_text(encoding="utf-8").split("\n\nWhen the task above")[0]
            if ("Yes, but keep the tide tables." in prompt) != answered:
                raise Surprise(f"the agent was told: {prompt}")
            self.page.say("Its prompt began:" if answered else "The answer was told once; now it began:")
            self.page.output(prompt)
