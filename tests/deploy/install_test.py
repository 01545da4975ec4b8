"""cmake --install: where the filter, the stream inspector, their manual
pages, the inspector's JSON schema and the sample PPDs go, with which modes,
under DESTDIR and under another prefix; the installed sample PPDs pass
cupstestppd with the filter installed and fail without it.

    install_test.py --build BUILD_DIR --source SOURCE_DIR
"""

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
    """{path below root: mode} of every file and link under root, and of
    every directory between root and them."""
    return {os.path.relpath(path, root): stat.S_IMODE(os.lstat(path).st_mode)
            for directory, dirs, files in os.walk(root)
            for path in (os.path.join(directory, name) for name in files + dirs)}


class InstallTest(unittest.TestCase):
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
        files = {os.path.join(under(serverbin), "filter", "pstozpjl"): 0o755,
                 os.path.join(share, "man", "man8", "pstozpjl.8"): 0o644,
                 os.path.join(prefix.lstrip("/"), "bin", "zpjl-inspect"): 0o755,
                 os.path.join(share, "man", "man1", "zpjl-inspect.1"): 0o644,
                 os.path.join(share, "doc", "pstozpjl", "zpjl-inspect-schema.json"): 0o644,
                 os.path.join(prefix.lstrip("/"), "bin", "zpjl-printer-app"): 0o755,
                 os.path.join(share, "man", "man8", "zpjl-printer-app.8"): 0o644,
                 os.path.join(prefix.lstrip("/"), "lib", "systemd", "system",
                              "zpjl-printer-app.service"): 0o644}
        for name in SAMPLE_PPDS:
            files[os.path.join(under(datadir), "model", "pstozpjl", name)] = 0o644
        layout = dict(files)
        for path in files:  # every directory on the way, not writable by others
            while os.path.dirname(path):
                path = os.path.dirname(path)
                layout[path] = 0o755
        return layout

    def test_installs_exactly_the_filter_inspector_manuals_schema_and_sample_ppds(self):
        work = cups_instance.private_directory(ARGS.build, "install-")
        self.addCleanup(shutil.rmtree, work, True)
        paths = cups_instance.read_install_paths(ARGS.build)
        default_prefix = paths["prefix"]
        # Without DESTDIR and prefix the filter lands where cupsd looks.
        self.assertEqual(os.path.join(cups_instance.cups_serverbin(), "filter"),
                         os.path.normpath(os.path.join(default_prefix, paths["filter_dir"])))
        for name, prefix, effective in (("default prefix", None, default_prefix),
                                        ("another prefix", "/opt/zpjl", "/opt/zpjl")):
            with self.subTest(name):
                destdir = os.path.join(work, name.replace(" ", "-"))
                cups_instance.install(ARGS.build, destdir, prefix=prefix)
                self.assertEqual(self.expected_layout(effective), installed_files(destdir))

    def test_cupstestppd_passes_with_the_filter_installed_and_fails_without(self):
        work = cups_instance.private_directory(ARGS.build, "ppd-")
        self.addCleanup(shutil.rmtree, work, True)
        installation = cups_instance.install(ARGS.build, os.path.join(work, "dest"))
        empty = os.path.join(work, "empty")
        os.makedirs(empty)
        for name in SAMPLE_PPDS:
            for root, passes, verdict in ((installation.destdir, True, "NO ERRORS FOUND"),
                                          (empty, False, 'Missing cupsFilter2 file "%s' % empty)):
                with self.subTest(name, root=root):
                    result = cups_instance.run(["cupstestppd", "-v", "-R", root,
                                                installation.ppd(name)], check=False)
                    report = result.stdout.decode(errors="replace")
                    self.assertEqual(passes, result.returncode == 0, report)
                    self.assertIn(verdict, report)
                    self.assertNotIn("WARN", report)


if __name__ == "__main__":
    ARGS = cups_instance.arguments()
    cups_instance.run_tests(ARGS)
