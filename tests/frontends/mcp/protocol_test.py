"""What the server answers to each line, by the rules of JSON-RPC and of the protocol's revisions."""

import json
import os
import unittest

from case import TOOLS, Case
from peer import call, initialize, request

META = "io.modelcontextprotocol/"
SUPPORTED = ["2026-07-28", "2025-11-25", "2025-06-18", "2025-03-26", "2024-11-05"]


def stateless(version="2026-07-28", client="new-client"):
    return {META + "protocolVersion": version, META + "clientInfo": {"name": client, "version": "1"},
            META + "clientCapabilities": {}}


PARSE, INVALID, METHOD, PARAMS = -32700, -32600, -32601, -32602

# A line, and what comes back: the id (None: without one) and the code of the error.
REFUSED = [
    ("no JSON", b"hello", None, PARSE),
    ("half a message", b'{"jsonrpc":"2.0","id":1,"method":"pi', None, PARSE),
    ("two messages on a line", b'{"jsonrpc":"2.0","id":1,"method":"ping"}{}', None, PARSE),
    ("no UTF-8", b'{"jsonrpc":"2.0","id":"\xff","method":"ping"}', None, PARSE),
    ("an overlong form of UTF-8", b'{"jsonrpc":"2.0","id":"\xc0\xaf","method":"ping"}', None, PARSE),
    ("a surrogate in UTF-8", b'{"jsonrpc":"2.0","id":"\xed\xa0\x80","method":"ping"}', None, PARSE),
    ("a NUL byte", b'{"jsonrpc":"2.0","id":"a\0b","method":"ping"}', None, PARSE),
    ("NUL bytes alone", b"\0\0\0\0", None, PARSE),
    ("a number beyond all", b'{"jsonrpc":"2.0","id":1e999,"method":"ping"}', None, INVALID),
    ("brackets without end", b"[" * 1_000_000, None, PARSE),
    ("a batch", b'[{"jsonrpc":"2.0","id":1,"method":"ping"}]', None, INVALID),
    ("an empty batch", b"[]", None, INVALID),
    ("a word", b'"ping"', None, INVALID),
    ("nothing", b"null", None, INVALID),
    ("an empty object", b"{}", None, INVALID),
    ("no version", b'{"id":7,"method":"ping"}', 7, INVALID),
    ("a wrong version", b'{"jsonrpc":"1.0","id":7,"method":"ping"}', 7, INVALID),
    ("a version that is a number", b'{"jsonrpc":2.0,"id":7,"method":"ping"}', 7, INVALID),
    ("no method", b'{"jsonrpc":"2.0","id":7}', 7, INVALID),
    ("a method that is no text", b'{"jsonrpc":"2.0","id":"x","method":5}', "x", INVALID),
    ("an id that is null", b'{"jsonrpc":"2.0","id":null,"method":"ping"}', None, INVALID),
    ("an id with a fraction", b'{"jsonrpc":"2.0","id":1.5,"method":"ping"}', None, INVALID),
    ("an id with an exponent", b'{"jsonrpc":"2.0","id":1e2,"method":"ping"}', None, INVALID),
    ("an id that is true", b'{"jsonrpc":"2.0","id":true,"method":"ping"}', None, INVALID),
    ("an id that is a list", b'{"jsonrpc":"2.0","id":[1],"method":"ping"}', None, INVALID),
    ("an object with too many members", json.dumps(call(7, "ask", {str(i): "" for i in range(2000)})).encode(), 7,
     INVALID),
    ("params in a list", b'{"jsonrpc":"2.0","id":7,"method":"tools/list","params":[1]}', 7, PARAMS),
    ("an unknown method", request(7, "tools/make"), 7, METHOD),
    ("a method that was not offered", request(7, "resources/list"), 7, METHOD),
    ("log levels, which were not offered", request(7, "logging/setLevel", {"level": "debug"}), 7, METHOD),
    ("a notification sent as a request", request(7, "notifications/initialized"), 7, METHOD),
    ("a cursor that was never given out", request(7, "tools/list", {"cursor": "2"}), 7, PARAMS),
    ("a cursor that is a number", request(7, "tools/list", {"cursor": 2}), 7, PARAMS),
    ("a call without params", request(7, "tools/call"), 7, PARAMS),
    ("a call without a name", request(7, "tools/call", {"arguments": {}}), 7, PARAMS),
    ("a name that is no text", request(7, "tools/call", {"name": 5}), 7, PARAMS),
    ("arguments in a list", request(7, "tools/call", {"name": "how_it_works", "arguments": ["a"]}), 7, PARAMS),
    ("arguments in a text", request(7, "tools/call", {"name": "how_it_works", "arguments": "a"}), 7, PARAMS),
    ("an unknown tool", call(7, "mail.fly"), 7, PARAMS),
    ("a tool's name in other letters", call(7, "Mail.Search"), 7, PARAMS),
    ("initialize without a revision", request(7, "initialize", {"capabilities": {}}), 7, PARAMS),
    ("initialize without params", request(7, "initialize"), 7, PARAMS),
    ("a revision that does not exist", request(7, "tools/list", {"_meta": stateless("1900-01-01")}), 7, -32022),
    ("a revision that is a number", request(7, "tools/list", {"_meta": {META + "protocolVersion": 5}}), 7, PARAMS),
]

# Lines that want no answer, whatever they say.
IGNORED = [
    b"", b"  \t ", b"\r", b"\xef\xbb\xbf",
    b'{"jsonrpc":"2.0","method":"notifications/unknown"}',
    b'{"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":"never-sent"}}',
    b'{"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":[1]}}',
    b'{"jsonrpc":"2.0","method":"notifications/cancelled"}',
    b'{"jsonrpc":"2.0","method":"notifications/cancelled","params":[5]}',
    b'{"jsonrpc":"2.0","method":"tools/call","params":{"name":"mail.send","arguments":{"to":"a@b.c","subject":"s"}}}',
    b'{"jsonrpc":"2.0","method":"ping"}',
    b'{"jsonrpc":"2.0","id":5,"result":{}}',
    b'{"jsonrpc":"2.0","id":5,"error":{"code":1,"message":"m"}}',
]


class Lines(Case):
    def test_each_faulty_line_gets_its_error_and_the_session_goes_on(self):
        peer = self.session()
        for name, line, id_, code in REFUSED:
            with self.subTest(name):
                answer = peer.ask(line)
                self.assertEqual(answer["error"]["code"], code, answer)
                self.assertEqual(answer.get("id"), id_)
                self.assertEqual("id" in answer, id_ is not None)
                self.assertTrue(answer["error"]["message"])
                self.assertEqual(peer.ask(request("after", "ping")), {"jsonrpc": "2.0", "id": "after", "result": {}})
        self.assertEqual(self.pending(), [])

    def test_what_wants_no_answer_gets_none_and_runs_nothing(self):
        peer = self.session()
        peer.send(*IGNORED)
        self.assertEqual(peer.ask(request(1, "ping"))["id"], 1)
        self.assertEqual(peer.end(), ([], 0))
        self.assertEqual(self.pending(), [])

    def test_ids_come_back_as_they_were(self):
        peer = self.session()
        for literal in ['0', '-1', '5', '"5"', '""', '"\\u00e9\\n"', '9007199254740993', '18446744073709551615',
                        '123456789012345678901234567890', '9' * 4000, '"' + "x" * 5_000_000 + '"',
                        '"\\ud83d\\ude00"', '"' + "\U0001F600" * 5000 + '"']:
            peer.send(f'{{"jsonrpc":"2.0","id":{literal},"method":"ping"}}'.encode())
            answer = peer.answer()
            self.assertEqual(answer["id"], json.loads(literal))
            self.assertIs(type(answer["id"]), type(json.loads(literal)))

    def test_half_a_surrogate_pair_is_a_replacement_character_wherever_it_stands(self):
        peer = self.session()
        for written, read in [(r"\ud83d", "\ufffd"), (r"\ude00", "\ufffd"), (r"cut \ud83d", "cut \ufffd"),
                              (r"\ud83dx", "\ufffdx"), (r"\ud83d\ud83d\ude00", "\ufffd\U0001F600"),
                              (r"\ude00\ud83d", "\ufffd\ufffd"), (r"\ud83d\u0041", "\ufffdA"), (r"\ud83d\n", "\ufffd\n"),
                              ("\U0001F600" + r"\uD83D", "\U0001F600\ufffd")]:
            with self.subTest(written):
                line = (f'{{"jsonrpc":"2.0","id":"{written}","method":"tools/call","params":{{"name":"mail.send",'
                        f'"arguments":{{"to":"a","subject":"{written}","{written}":"x"}}}}}}')
                answer = peer.ask(line.encode())
                self.assertEqual(answer["id"], read)
                with open(os.path.join(self.home, "pending", answer["result"]["content"][0]["text"][8:16] + ".json"),
                          encoding="utf-8") as file:
                    self.assertEqual(json.load(file)["args"], {"to": "a", "subject": read, read: "x"})

    def test_a_line_beyond_the_bound_is_refused_and_passed_over(self):
        peer = self.session()
        peer.process.stdin.write(b'{"jsonrpc":"2.0","id":1,"method":"ping","params":{"x":"')
        for _ in range(400):
            peer.process.stdin.write(b"a" * (1 << 20))
        peer.send(b'"}}')
        self.assertEqual(peer.answer()["error"]["code"], INVALID)
        self.assertEqual(peer.ask(request(2, "ping"))["id"], 2)
        with open(f"/proc/{peer.process.pid}/status", encoding="ascii") as status:
            memory = next(int(line.split()[1]) for line in status if line.startswith("VmHWM:"))
        # A sanitizer holds freed memory back.
        bound = 350 if os.environ.get("MERVO_SANITIZED") else 150
        self.assertLess(memory, bound * 1024, "kB: a line that is thrown away is not kept")


class Beginnings(Case):
    def test_the_revision_is_the_clients_or_our_newest_with_a_session(self):
        for wanted, given in [(v, v) for v in SUPPORTED[1:]] + [("2026-07-28", "2025-11-25"), ("1.0", "2025-11-25")]:
            result = self.peer().ask(initialize(wanted))["result"]
            self.assertEqual(result["protocolVersion"], given)
            self.assertEqual(result["capabilities"], {"tools": {}})
            self.assertEqual(result["serverInfo"]["name"], "mervo")
            self.assertTrue(result["serverInfo"]["version"])
            self.assertTrue(result["instructions"].startswith("Mervo: you propose, the human approves."))

    def test_bad_params_of_initialize_name_what_is_supported(self):
        error = self.peer().ask(request(1, "initialize", {"protocolVersion": 5}))["error"]
        self.assertEqual((error["code"], error["data"]), (PARAMS, {"supported": SUPPORTED}))

    def test_before_initialize_there_is_ping_and_no_tools(self):
        peer = self.peer()
        self.assertEqual(peer.ask(request(1, "ping"))["result"], {})
        self.assertEqual(peer.ask(request(2, "tools/list"))["error"]["code"], INVALID)
        self.assertEqual(peer.ask(call(3, "how_it_works"))["error"]["code"], INVALID)
        self.assertEqual(peer.ask(request(4, "sampling/createMessage"))["error"]["code"], METHOD)
        self.assertIn("result", peer.ask(initialize()))
        self.assertIn("result", peer.ask(request(5, "tools/list")))
        self.assertIn("result", peer.ask(initialize("2024-11-05")), "a client that starts anew is served anew")

    def test_the_stateless_era_needs_no_handshake(self):
        peer = self.peer()
        meta = {"_meta": stateless()}
        found = peer.ask(request("d", "server/discover", meta))["result"]
        self.assertEqual(found["supportedVersions"], SUPPORTED)
        self.assertEqual(found["capabilities"], {"tools": {}})
        tools = peer.ask(request(2, "tools/list", meta))["result"]
        for result in (found, tools):
            self.assertEqual(result["resultType"], "complete")
            self.assertIsInstance(result["ttlMs"], int)
            self.assertIn(result["cacheScope"], ("public", "private"))
            self.assertEqual(result["_meta"][META + "serverInfo"]["name"], "mervo")
        called = peer.ask(call(3, "how_it_works", **meta))
        self.assertEqual(called["result"]["resultType"], "complete")
        self.assertTrue(self.text(called))
        self.assertEqual(peer.ask(request(4, "ping", meta))["result"]["resultType"], "complete")
        refused = peer.ask(request(5, "server/discover", {"_meta": stateless("2099-01-01")}))["error"]
        self.assertEqual(refused["data"], {"supported": SUPPORTED, "requested": "2099-01-01"})
        self.assertEqual(peer.ask(request(6, "tools/list"))["error"]["code"], INVALID, "without _meta: a session")
        self.assertEqual([row[0] for row in self.audit()], ["mcp:new-client"])


class Calls(Case):
    def test_executed_pending_and_error_are_told_apart(self):
        peer = self.session()
        self.assertIn("Mervo", self.text(peer.ask(call(1, "how_it_works"))))
        waiting = self.text(peer.ask(call(2, "mail.send", {"to": "ann@example.org", "subject": "s", "body": "b"})))
        (file,) = self.pending()
        self.assertTrue(waiting.startswith(f"pending {file.removesuffix('.json')}: waits for the owner's approval"))
        self.assertTrue(self.text(peer.ask(call(3, "mail.send")), error=True).startswith("missing required argument"))
        unknown = peer.ask(call(4, "mail.serch"))["error"]
        self.assertTrue(unknown["message"].startswith("Unknown tool: mail.serch"))
        self.assertIn("mail.search", unknown["message"])
        self.assertEqual([(row[1], row[2]) for row in self.audit()],
                         [("how_it_works", "executed"), ("mail.send", "pending_approval")])

    def test_arguments_become_texts(self):
        taken = [("text", '"a b"', "a b"), ("empty", '""', ""), ("whole", "5", "5"), ("below", "-7", "-7"),
                 ("point", "5.0", "5"), ("fraction", "1.5", "1.5"), ("exact", "0.10", "0.10"), ("large", "1e3", "1000"),
                 ("huge", "123456789012345678901234567890", "123456789012345678901234567890"), ("tiny", "1e-7", "1e-7"),
                 ("yes", "true", "true"), ("no", "false", "false"), ("lines", '"a\\nb"', "a\nb"),
                 ("twice", '"first","twice":"last"', "last"), ("face", '"\\ud83d\\ude00"', "\U0001F600")]
        given = ",".join(f'"{name}":{literal}' for name, literal, _ in taken) + ',"void":null'
        peer = self.session()
        peer.send(('{"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":"how_it_works","arguments":{%s}}}'
                   % given).encode())
        result = peer.answer()["result"]
        remarks = sorted(f"how_it_works ignores {name}" for name, _, _ in taken)
        self.assertEqual(result["_meta"], {"org.mervolabs/remarks": remarks})
        self.assertEqual(result["content"][1:], [{"type": "text", "text": "\n".join("note: " + r for r in remarks)}])
        ((_, _, _, details),) = self.audit()
        del details["result"]
        self.assertEqual(details, {name: text for name, _, text in taken})

        for literal, words in [("[1]", "is a list"), ("{}", "is an object"), ("[" * 5000 + "]" * 5000, "is a list"),
                               ('{"a":' * 500 + "1" + "}" * 500, "is an object"), ('"a\\u0000b"', "a NUL character")]:
            peer.send(('{"jsonrpc":"2.0","id":2,"method":"tools/call","params":{"name":"how_it_works",'
                       '"arguments":{"bent":%s}}}' % literal).encode())
            text = self.text(peer.answer(), error=True)
            self.assertIn('"bent"', text)
            self.assertIn(words, text)
        self.assertEqual(len(self.audit()), 1)

    def test_the_actor_is_the_clients_name_made_plain(self):
        for client, actor in [("claude-code", "mcp:claude-code"), ("a\nb\x07\x7f", "mcp:ab"), ("", "mcp:unknown"),
                              ("n" * 500, "mcp:" + "n" * 64), ("é" * 100, "mcp:" + "é" * 64),
                              ("evil\u202eliame", "mcp:evil<U+202E>liame"), (None, "mcp:unknown")]:
            peer = self.session(client=client)
            self.text(peer.ask(call(1, "how_it_works")))
            peer.end()
            self.assertEqual(self.audit()[-1][0], actor)


class Names(Case):
    def names(self, peer):
        return [tool["name"] for tool in peer.ask(request(1, "tools/list"))["result"]["tools"]]

    def test_the_list_is_the_catalogue_with_every_hint(self):
        peer = self.session()
        tools = peer.ask(request(1, "tools/list", {"cursor": None}))["result"]["tools"]
        self.assertEqual([tool["name"] for tool in tools], TOOLS)
        for tool in tools:
            self.assertRegex(tool["name"], r"^[A-Za-z0-9_.-]{1,64}$")
            self.assertTrue(tool["title"] and tool["description"])
            schema = tool["inputSchema"]
            self.assertEqual(schema["type"], "object")
            self.assertLessEqual(set(schema.get("required", [])), set(schema["properties"]))
            self.assertIs(schema["additionalProperties"], False)
            for entry in schema["properties"].values():
                self.assertEqual(entry["type"], "string")
                self.assertTrue(entry["description"])
            self.assertEqual(set(tool["annotations"]),
                             {"readOnlyHint", "destructiveHint", "idempotentHint", "openWorldHint"})

    def test_who_refuses_dots_gets_underscores_and_everyone_may_call_by_either(self):
        for options, client, dotted in [((), "test-client", True), ((), "claude-ai", False),
                                        ((), "codex-mcp-client", False), ((), "claude-ai-2", True),
                                        (("--tool-names=underscore",), "test-client", False),
                                        (("--tool-names", "dots"), "claude-ai", True),
                                        (("--tool-names=auto",), "cursor-vscode", False)]:
            peer = self.session(*options, client=client)
            names = self.names(peer)
            self.assertEqual("mail.search" in names, dotted, client)
            self.assertEqual("mail_search" in names, not dotted, client)
            self.assertEqual(len(set(names)), len(TOOLS))
            if not dotted:
                self.assertFalse([name for name in names if "." in name])
                self.assertIn("mail_search", peer.ask(call(2, "mail_serch"))["error"]["message"])
            for name in ("mail.send", "mail_send"):
                self.assertIn("missing required argument", self.text(peer.ask(call(3, name)), error=True))
            self.text(peer.ask(call(4, "mail_send", {"to": "a@b.org", "subject": "s", "body": "b"})))
            self.assertEqual(self.audit()[-1][1], "mail.send", "the id stands everywhere behind the server")


if __name__ == "__main__":
    unittest.main()
