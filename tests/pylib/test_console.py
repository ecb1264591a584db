"""The console writers: whole lines to printmsg, in order, pieces that fit a console line."""
import unittest

from fake_tw_C import fake, import_tw

import_tw()
from tw._console import MAX_LINE_BYTES, ConsoleWriter  # noqa: E402


class ConsoleWriterTest(unittest.TestCase):
    def setUp(self) -> None:
        fake.reset()
        self.writer = ConsoleWriter("<test>")

    def test_lines_are_printed_when_they_end(self) -> None:
        cases = [
            (["hello\n"], ["hello"]),
            (["a", "b", "\n"], ["ab"]),
            (["one\ntwo\nthr", "ee\n"], ["one", "two", "three"]),
            (["\n\n"], ["", ""]),
            (["no end"], []),
        ]
        for writes, printed in cases:
            with self.subTest(writes=writes):
                fake.reset()
                writer = ConsoleWriter("<test>")
                for text in writes:
                    self.assertEqual(writer.write(text), len(text))
                self.assertEqual(fake.printed, printed)

    def test_flush_prints_the_pending_text_once(self) -> None:
        self.writer.write("partial")
        self.writer.flush()
        self.writer.flush()
        self.writer.write(" rest\n")
        self.assertEqual(fake.printed, ["partial", " rest"])

    def test_long_lines_come_in_pieces_that_fit(self) -> None:
        line = "é" * 1500 + "x" * 10  # 3010 bytes; the cut never splits a character
        self.writer.write(line + "\n")
        self.assertEqual("".join(fake.printed), line)
        self.assertTrue(all(len(p.encode()) <= MAX_LINE_BYTES for p in fake.printed))
        self.assertEqual(len(fake.printed), 2)

    def test_text_printmsg_would_refuse_is_made_printable(self) -> None:
        self.writer.write("nul\0here \udcff\n")
        self.assertEqual(fake.printed, ["nul\\x00here ?"])

    def test_only_text_is_written(self) -> None:
        with self.assertRaises(TypeError):
            self.writer.write(b"bytes")


if __name__ == "__main__":
    unittest.main()
