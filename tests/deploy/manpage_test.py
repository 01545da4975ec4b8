"""pstozpjl(8): it formats without warnings, and it documents exactly the
ticket keys and PPD keywords the filter's sources read. zpjl-inspect(1): it
formats without warnings and documents every option and exit status of the
command.

    manpage_test.py --build BUILD_DIR --source SOURCE_DIR
"""

import glob
import os
import re
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import cups_instance  # noqa: E402

ARGS = None

LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
KEY_DOMAIN = re.compile(r"^com\.korvanel\.qd\.[a-z]+\.printsettings\.")
# PPD keywords of the printers (choice names such as KR13x19 are not).
PPD_KEYWORD = re.compile(r"^\*?(KR[A-Z][A-Za-z]+)$")


def source_literals(source_dir):
    """Every string literal in the filter's sources."""
    literals = set()
    for path in glob.glob(os.path.join(source_dir, "src", "**", "*.[ch]*"), recursive=True):
        with open(path, encoding="utf-8", errors="replace") as source:
            for line in source:
                if line.lstrip().startswith("//"):
                    continue
                literals.update(LITERAL.findall(line))
    return literals


def documented_names(page):
    """(ticket key names after "jtz." or "etz.", bold words) of the page."""
    keys = set(re.findall(r"(?m)^\.IR [je]tz\. (\S+)", page))
    bold = {word.lstrip("*") for word in re.findall(r"(?m)^\.BR? (\S+)", page)}
    return keys, bold


class ManPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with open(os.path.join(ARGS.build, "man", "pstozpjl.8"), encoding="utf-8") as page:
            cls.page = page.read()
        cls.keys, cls.bold = documented_names(cls.page)
        cls.literals = source_literals(ARGS.source)

    def test_every_page_formats_without_warnings(self):
        for page in ("pstozpjl.8", "zpjl-inspect.1", "zpjl-printer-app.8"):
            for device in ("utf8", "ps"):
                with self.subTest(page, device=device):
                    result = cups_instance.run(["groff", "-man", "-ww", "-z", "-T" + device,
                                                os.path.join(ARGS.build, "man", page)],
                                               check=False)
                    self.assertEqual(0, result.returncode)
                    self.assertEqual(b"", result.stderr)

    def test_every_ticket_key_of_the_sources_is_documented(self):
        # Ticket key names (the part after the key domain) the sources hold.
        names = {KEY_DOMAIN.sub("", lit) for lit in self.literals if "Ticket" in lit and
                 (KEY_DOMAIN.match(lit) or not lit.startswith("com."))} - {""}
        self.assertTrue(names)
        self.assertEqual(set(), names - self.keys)

    def test_every_documented_ticket_key_is_read_by_the_sources(self):
        unknown = {key for key in self.keys if not any(key in lit for lit in self.literals)}
        self.assertEqual(set(), unknown)

    def test_every_ppd_keyword_of_the_sources_is_documented(self):
        keywords = {m.group(1) for m in map(PPD_KEYWORD.match, self.literals) if m}
        self.assertIn("KRPSDecompMode", keywords)
        self.assertEqual(set(), keywords - self.bold)

    def test_paths_are_those_of_the_build(self):
        paths = cups_instance.read_install_paths(ARGS.build)
        self.assertNotRegex(self.page, r"@[A-Z_]+@", "unexpanded placeholder")
        for text in (paths["flag"], paths["legacy_pattern"],
                     os.path.join(paths["prefix"], paths["filter_dir"], "pstozpjl"),
                     os.path.join(paths["prefix"], paths["model_dir"])):
            with self.subTest(text):
                self.assertIn(text, self.page)


class InspectManPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with open(os.path.join(ARGS.build, "man", "zpjl-inspect.1"), encoding="utf-8") as page:
            cls.page = page.read()
        cls.usage = cups_instance.run([os.path.join(ARGS.build, "zpjl-inspect"), "--help"]).stdout.decode()

    def test_documents_every_option_and_exit_status_of_the_command(self):
        options = set(re.findall(r"--[a-z][a-z-]*", self.usage))
        self.assertIn("--show-secrets", options)
        for option in sorted(options):
            with self.subTest(option):
                self.assertIn(option.replace("-", "\\-"), self.page)
        for status in re.findall(r"(\d) [a-z]", self.usage.split("Exit status:")[1]):
            with self.subTest(status=status):
                self.assertRegex(self.page, r"(?m)^\.B %s$" % status)

    def test_names_the_schema_where_the_build_installs_it(self):
        paths = cups_instance.read_install_paths(ARGS.build)
        self.assertNotRegex(self.page, r"@[A-Z_]+@", "unexpanded placeholder")
        self.assertIn(os.path.join(paths["prefix"], paths["doc_dir"], "zpjl-inspect-schema.json"),
                      self.page)


if __name__ == "__main__":
    ARGS = cups_instance.arguments()
    cups_instance.run_tests(ARGS)
