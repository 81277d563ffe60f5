"""The proxy's log: one line a record, in one form, whatever a query holds."""

import re

from roadlib import wire
from roadlib.case import RoadTest, main
from roadlib.client import ask

# What the proxy prints to standard output at each state of its link to the relay service; no log record.
STATE_LINE = "Xpc Udp This is stateUpdateHandler:"


class LogTest(RoadTest):
    def records_of(self, name):
        """The log texts of one query, each line's form checked, without those of the link to the relay service."""
        _, proxy = self.road(settings={"organizationId": ""})  # no policy fetch, whose end may come at any time
        query = wire.query(name)
        self.assertEqual(ask(proxy.endpoint, query), wire.answer_to(query))
        proxy.wait_for_line("State: Cancelled")
        self.assertEqual(proxy.stop(), 0)
        form = re.compile(rf"\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{{3}} quillet-dns-proxy\[{proxy.pid}\] (.*)")
        texts = []
        for line in proxy.output():
            if line != STATE_LINE:
                self.assertNotRegex(line, r"[\x00-\x1f\x7f-\x9f]")
                self.assertRegex(line, form)
                texts.append(form.fullmatch(line)[1])
        start = next(i for i, text in enumerate(texts) if "handleNewUDPFlow, instance id" in text)
        return [text for text in texts[start:] if not text.startswith(("Xpc Udp ", "*Xpc Udp "))]

    def test_what_a_query_holds_makes_no_record_of_its_own(self):
        plain = self.records_of(("plain", "example"))
        texts = self.records_of((b"\n2026-01-01 x[1] stopProxy", b"\r\0\x1b[31m\x7f%s%n", b"example"))
        self.assertEqual(len(texts), len(plain))
        self.assertIn(r"question domain is: \n2026-01-01 x[1] stopProxy.\x0D\x00\x1B[31m\x7F%s%n.example.", texts)
        self.assertIn(r"question domain is: \xC2\x85.\xC2\x9B[31m.ž.",
                      self.records_of((b"\xc2\x85", b"\xc2\x9b[31m", "ž")))



if __name__ == "__main__":
    main()
