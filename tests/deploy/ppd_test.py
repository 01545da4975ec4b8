"""The sample PPDs as CUPS sees them: cupstestppd's conformance checks
against the installed filter (jobs through CUPS are live_queue_test's).

    ppd_test.py --build BUILD_DIR --source SOURCE_DIR
"""

import os
import shutil
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import cups_instance  # noqa: E402

ARGS = None

PRODUCTION = "zpjl-color-production.ppd"
MONO = "zpjl-mono-office-sjis.ppd"
INSERTION = "zpjl-color-office-insertion.ppd"


class PpdTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = cups_instance.private_directory(ARGS.build, "ppd-")
        cls.addClassCleanup(shutil.rmtree, cls.root, True)
        cls.installation = cups_instance.install(ARGS.build, os.path.join(cls.root, "dest"))

    def test_cupstestppd_passes_with_the_filter_installed_and_fails_without(self):
        empty_root = os.path.join(self.root, "empty")
        os.makedirs(empty_root, exist_ok=True)
        for name in (PRODUCTION, MONO, INSERTION):
            for root, passes, verdict in (
                    (self.installation.destdir, True, "NO ERRORS FOUND"),
                    (empty_root, False, 'Missing cupsFilter2 file "%s' % empty_root)):
                with self.subTest(name, root=root):
                    result = cups_instance.run(["cupstestppd", "-v", "-R", root,
                                                self.installation.ppd(name)], check=False)
                    report = result.stdout.decode(errors="replace")
                    self.assertEqual(passes, result.returncode == 0, report)
                    self.assertIn(verdict, report)
                    self.assertNotIn("WARN", report)


if __name__ == "__main__":
    ARGS = cups_instance.arguments()
    cups_instance.run_tests(ARGS)
