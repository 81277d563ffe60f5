"""The proxy's log: one line a record, in one form, whatever a query holds."""

import re

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import ask


# What the proxy prints to standard output at each state of its link to the relay service; no log record.
STATE_LINE = "Xpc Udp This is stateUpdateHandler:"
# Records of that link, which stands beside the query's road.
LINK_RECORDS = ("Xpc Udp ", "*Xpc Udp ")


class LogTest(RoadTest):
    def records_of(self, name):
        """The log texts of one query, each line's form checked; the flow's numbers replaced."""
        _, proxy = self.road(settings={"organizationId": ""})  # no policy fetch, whose end may come at any time
        query = wire.query(name)
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        proxy.wait_for_line("State: Cancelled")
        self.assertEqual(proxy.stop(), 0)
        form = re.compile(rf"\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{{3}} quillet-dns-proxy\[{proxy.pid}\] (.*)")
        texts = []
        for line in proxy.output():
            if line == STATE_LINE:
                continue
            match = form.fullmatch(line)
            self.assertIsNotNone(match, line)
            self.assertNotRegex(line, r"[\x00-\x1f\x7f-\x9f]")
            if not match[1].startswith(LINK_RECORDS):
                texts.append(match[1])
        start = next(i for i, text in enumerate(texts) if "handleNewUDPFlow, instance id" in text)
        return texts[start:]

    def test_control_characters_make_no_record_of_their_own(self):
        plain = self.records_of(("ab", "cdefg", "example"))
        for name, shown in (
                ((b"a\n", b"cdefg", b"example"), r"a\n.cdefg.example"),
                ((b"ab", b"\x1b[31m", b"example"), r"ab.\x1B[31m.example"),
                ((b"a\r", b"\0\x07\x08\x7f!", b"example"), r"a\x0D.\x00\x07\x08\x7F!.example"),
                ((b"%s", b"%n%x%", b"example"), "%s.%n%x%.example")):
            with self.subTest(name=name):
                texts = self.records_of(name)
                self.assertEqual(len(texts), len(plain))
                self.assertIn(f"question domain is: {shown}.", texts)

    def test_control_characters_beyond_ascii(self):
        self.assertIn(r"question domain is: \xC2\x85.\xC2\x9B[31m.ž.example.",
                      self.records_of((b"\xc2\x85", b"\xc2\x9b[31m", "ž", "example")))

    def test_records_are_forged_by_nobody(self):
        forged = b"\n2026-01-01 00:00:00 quillet-dns-proxy[1] stopProxy, reason"
        texts = self.records_of((forged, b"example"))
        self.assertEqual(sum(text.startswith("stopProxy, reason") for text in texts), 1)


if __name__ == "__main__":
    main()
