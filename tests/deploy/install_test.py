"""cmake --install: where the filter, the stream inspector, their manual
pages, the inspector's JSON schema and the sample PPDs go, with which modes,
under DESTDIR and under another prefix.

    install_test.py --build BUILD_DIR --source SOURCE_DIR
"""

import argparse
import glob
import os
import shutil
import stat
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import cups_instance  # noqa: E402

ARGS = None
SAMPLE_PPDS = ["zpjl-color-office-insertion.ppd", "zpjl-color-production.ppd",
               "zpjl-mono-office-sjis.ppd"]


def installed_files(root):
    """{path below root: mode} of every file and link under root."""
    found = {}
    for directory, _, files in os.walk(root):
        for name in files:
            path = os.path.join(directory, name)
            found[os.path.relpath(path, root)] = stat.S_IMODE(os.lstat(path).st_mode)
    return found


class InstallTest(unittest.TestCase):
    def setUp(self):
        self.work = cups_instance.private_directory(ARGS.build, "install-")
        self.addCleanup(shutil.rmtree, self.work, True)
        self.paths = cups_instance.read_install_paths(ARGS.build)

    def expected_layout(self, prefix):
        """{path below DESTDIR: mode} for an install under `prefix`, with the
        CUPS directories as the system's CUPS names them."""
        serverbin = cups_instance.cups_serverbin()
        datadir = cups_instance.run(["cups-config", "--datadir"]).stdout.decode().strip()

        def under(path):
            if path.startswith("/usr/"):
                path = os.path.join(prefix, path[len("/usr/"):])
            return path.lstrip("/")

        share = os.path.join(prefix.lstrip("/"), "share")
        layout = {os.path.join(under(serverbin), "filter", "pstozpjl"): 0o755,
                  os.path.join(share, "man", "man8", "pstozpjl.8"): 0o644,
                  os.path.join(prefix.lstrip("/"), "bin", "zpjl-inspect"): 0o755,
                  os.path.join(share, "man", "man1", "zpjl-inspect.1"): 0o644,
                  os.path.join(share, "doc", "pstozpjl", "zpjl-inspect-schema.json"): 0o644}
        for name in SAMPLE_PPDS:
            layout[os.path.join(under(datadir), "model", "pstozpjl", name)] = 0o644
        return layout

    def test_installs_exactly_the_filter_inspector_manuals_schema_and_sample_ppds(self):
        cases = [
            ("default prefix", None, self.paths["prefix"]),
            ("another prefix", "/opt/zpjl", "/opt/zpjl"),
        ]
        for name, prefix, effective in cases:
            with self.subTest(name):
                destdir = os.path.join(self.work, name.replace(" ", "-"))
                cups_instance.install(ARGS.build, destdir, prefix=prefix)
                self.assertEqual(self.expected_layout(effective), installed_files(destdir))

    def test_default_prefix_reaches_the_cups_filter_directory(self):
        # Without DESTDIR and prefix the filter lands where cupsd looks.
        filter_dir = self.paths["filter_dir"]
        if not os.path.isabs(filter_dir):
            filter_dir = os.path.join(self.paths["prefix"], filter_dir)
        self.assertEqual(os.path.join(cups_instance.cups_serverbin(), "filter"),
                         os.path.normpath(filter_dir))

    def test_directories_are_not_writable_by_others(self):
        destdir = os.path.join(self.work, "dirs")
        installation = cups_instance.install(ARGS.build, destdir)
        directory = os.path.dirname(installation.filter)
        while len(directory) > len(destdir):
            with self.subTest(directory=directory):
                self.assertEqual(0o755, stat.S_IMODE(os.stat(directory).st_mode))
            directory = os.path.dirname(directory)

    def test_installed_sample_ppds_equal_the_sources(self):
        installation = cups_instance.install(ARGS.build, os.path.join(self.work, "ppd"))
        sources = sorted(os.path.basename(p) for p in glob.glob(os.path.join(ARGS.source, "ppd", "*.ppd")))
        self.assertEqual(SAMPLE_PPDS, sources)
        for name in SAMPLE_PPDS:
            with self.subTest(name), open(os.path.join(ARGS.source, "ppd", name), "rb") as source, \
                    open(installation.ppd(name), "rb") as installed:
                self.assertEqual(source.read(), installed.read())

    def test_inspector_manual_page_names_the_installed_schema(self):
        for name, prefix in (("default prefix", None), ("another prefix", "/opt/zpjl")):
            with self.subTest(name):
                destdir = os.path.join(self.work, "inspect-" + name.replace(" ", "-"))
                cups_instance.install(ARGS.build, destdir, prefix=prefix)
                effective = prefix or self.paths["prefix"]
                with open(os.path.join(destdir + effective, self.paths["man1_dir"],
                                       "zpjl-inspect.1"), encoding="utf-8") as page:
                    text = page.read()
                self.assertNotRegex(text, r"@[A-Z_]+@", "unexpanded placeholder")
                # The page of a build names where that build puts the schema.
                schema = os.path.join(self.paths["prefix"], self.paths["doc_dir"],
                                      "zpjl-inspect-schema.json")
                self.assertIn(schema, text)

    def test_manual_page_names_the_installed_paths(self):
        installation = cups_instance.install(ARGS.build, os.path.join(self.work, "man"))
        with open(installation.man_page, encoding="utf-8") as page:
            text = page.read()
        self.assertNotRegex(text, r"@[A-Z_]+@", "unexpanded placeholder")
        for path in (installation.filter, installation.model_dir):
            with self.subTest(path=path):
                self.assertIn(path[len(installation.destdir):], text)


def main():
    global ARGS
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True)
    parser.add_argument("--source", required=True)
    ARGS, rest = parser.parse_known_args()
    ARGS.build = os.path.abspath(ARGS.build)
    ARGS.source = os.path.abspath(ARGS.source)
    unittest.main(argv=[sys.argv[0]] + rest, verbosity=2)


if __name__ == "__main__":
    main()
