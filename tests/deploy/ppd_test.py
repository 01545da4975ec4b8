"""The sample PPDs as CUPS sees them: cupstestppd's conformance checks
against the installed filter, and a job through cupsfilter with the filter
chain each PPD selects.

    ppd_test.py --build BUILD_DIR --source SOURCE_DIR
"""

import os
import shutil
import socket
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import cups_instance  # noqa: E402
from print_stream import TRAILER, UEL, Stream, match_lines, visible  # noqa: E402

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
        serverbin = cups_instance.make_serverbin(cls.root, cls.installation.filter)
        os.mkdir(os.path.join(cls.root, "etc"))
        cls.files_conf = os.path.join(cls.root, "etc", "cups-files.conf")
        cups_instance.write_cups_files_conf(cls.files_conf, cls.root, serverbin)
        cls.job = os.path.join(os.path.dirname(os.path.abspath(__file__)), "two-page-job.ps")

    def cupsfilter(self, ppd, user, title, options):
        command = ["cupsfilter", "-c", self.files_conf, "-p", self.installation.ppd(ppd),
                   "-e", "-m", "printer/zpjl", "-U", user, "-t", title]
        for name, value in options:
            command += ["-o", "%s=%s" % (name, value)]
        result = cups_instance.run(command + [self.job], check=False)
        log = result.stderr.decode(errors="replace")
        self.assertEqual(0, result.returncode, log)
        self.assertRegex(log, r"pstozpjl \(PID \d+\) exited with no errors")
        return result.stdout, log

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

    # ---- Jobs through cupsfilter ---------------------------------------------------------

    def test_production_printer_job(self):
        out, _ = self.cupsfilter(PRODUCTION, "alice", "Report", [
            ("KRPBindPosition", "BindRight"), ("KRPBindTrimming", "3EdgeCutMinimum"),
            ("KRPBindPageSize", "A4"), ("KRPBindCoverPageSize", "DL"),
            ("KRSignature", "LeftSigCenterStaple"), ("KRSigVol", "10Sheets"),
            ("KRColorMode", "Black")])
        stream = Stream(out)
        host = socket.gethostname()[:32].encode()
        expected = [
            UEL + b"@PJL SET STRINGCODESET=UTF8\n",
            b"@PJL JOB MODE=PRINTER\r\n",
            b'@PJL SET JOBATTR="@CNAM=' + host + b'"\n',
            b'@PJL SET JOBATTR="@LUNA=alice"\n',
            b'@PJL SET JOBATTR="@NLPP=1"\n',
            b'@PJL SET JOBATTR="@JOAU=alice"\r\n',
            b'@PJL SET JOBATTR="@ACNA=Report"\r\n',
            # perfect binding, right edge, minimum cut on A4
            b'@PJL SET JOBATTR="@PBRE=RIGHT"\n',
            b'@PJL SET JOBATTR="@MSDA=ROTLEFPORT"\n',
            b'@PJL SET JOBATTR="@PBTC=FULLBLEED"\n',
            b'@PJL SET JOBATTR="@PBBP=A4"\n',
            b'@PJL SET JOBATTR="@PBTP=CUSTOM"\n',
            b'@PJL SET JOBATTR="@PBTW=2030"\n',
            b'@PJL SET JOBATTR="@PBTH=2830"\n',
            b'@PJL SET JOBATTR="@PBCP=LEDGER"\n',
            b'@PJL SET JOBATTR="@PBCI=OFF"\n',
            # booklet
            b'@PJL SET JOBATTR="@DIND=PORTRAIT"\n',
            b'@PJL SET JOBATTR="@DIBB=LEFT"\n',
            b'@PJL SET JOBATTR="@DIBK=MANUALDIVIDE"\n',
            b"@PJL SET RENDERMODE=GRAYSCALE\n",
            b"@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n",
            b"@PJL COMMENT PRINTJOBINFO BEGIN\n",
            b"@PJL COMMENT PRINTJOBINFO PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]\n",
            b"@PJL COMMENT PRINTJOBINFO JOBTYPE=PRINT\n",
            b"@PJL COMMENT PRINTJOBINFO DUPLEXTYPE=TUMBLE\n",
            b"@PJL COMMENT PRINTJOBINFO COLORMODE=GRAYSCALE\n",
            b"@PJL COMMENT PRINTJOBINFO NUP=1\n",
            b"@PJL COMMENT PRINTJOBINFO BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[10]\n",
            b"@PJL COMMENT PRINTJOBINFO ORIENTATION=LANDSCAPE\n",
            b"@PJL COMMENT PRINTJOBINFO SADDLESTAPLE=ON\n",
            b"@PJL COMMENT PRINTJOBINFO MIXEDSIZETYPE=NONE\n",
            b"@PJL COMMENT PRINTJOBINFO CUD=OFF\n",
            b"@PJL COMMENT PRINTJOBINFO END\n",
            b"@PJL ENTER LANGUAGE=POSTSCRIPT\n",
        ]
        match_lines(self, expected, stream.header_lines())
        self.assertTrue(stream.body.startswith(b"%!PS-Adobe-3.0\n"), visible(stream.body[:200]))
        self.assertTrue(stream.body.endswith(b"\x04"))
        self.assertEqual(TRAILER, stream.trailer)

    def test_shift_jis_printer_job(self):
        user, title = "山田", "報告書"
        out, log = self.cupsfilter(MONO, user, title, [
            ("KRTonerSaver", "UserInput"), ("KRTonerReductionRate", "Percent50"),
            ("KRLineWeightAdjustment", "Strongly2"), ("KRStaple", "LeftDouble"),
            ("KRPunch", "Left"), ("KRNumPunchHoles", "3Holes")])
        stream = Stream(out)
        host = socket.gethostname().encode()
        sjis_user, sjis_title = user.encode("shift_jis"), title.encode("shift_jis")
        expected = [
            UEL + b"@PJL JOB MODE=PRINTER\r\n",
            b'@PJL SET JOBATTR="@CNAM=' + host + b'"\n',
            b'@PJL SET JOBATTR="@LUNA=' + sjis_user + b'"\n',
            b'@PJL SET JOBATTR="@NLPP=1"\n',
            b'@PJL SET JOBATTR="@JOAU=' + sjis_user + b'"\r\n',
            b'@PJL SET JOBATTR="@ACNA=' + sjis_title + b'"\r\n',
            b"@PJL SET ECONOMODE=ON\n",
            b"@PJL SET REDUCTIONRATE=50\n",
            b'@PJL SET JOBATTR="@LWAD=-2"\n',
            b"@PJL SET RENDERMODE=GRAYSCALE\n",
            b"@PJL COMMENT PRINTJOBINFO VERSION=1.3.0\n",
            b"@PJL COMMENT PRINTJOBINFO BEGIN\n",
            b"@PJL COMMENT PRINTJOBINFO PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]\n",
            b"@PJL COMMENT PRINTJOBINFO JOBTYPE=PRINT\n",
            b"@PJL COMMENT PRINTJOBINFO DUPLEXTYPE=SIMPLEX\n",
            b"@PJL COMMENT PRINTJOBINFO COLORMODE=GRAYSCALE\n",
            b"@PJL COMMENT PRINTJOBINFO NUP=1\n",
            b"@PJL COMMENT PRINTJOBINFO STAPLE=ON\n",
            b"@PJL COMMENT PRINTJOBINFO PUNCH=ON\n",
            b"@PJL COMMENT PRINTJOBINFO END\n",
            b"@PJL ENTER LANGUAGE=POSTSCRIPT\n",
        ]
        match_lines(self, expected, stream.header_lines())
        self.assertIn("PAGE:2 1", log)
        self.assertEqual(TRAILER, stream.trailer)

    def test_insertion_printer_job(self):
        out, _ = self.cupsfilter(INSERTION, "alice", "Report", [
            ("KRSetTrapMode", "True"), ("KROutputMode", "HighSpeed"),
            ("KRColorDensityMagentaHigh", "-3")])
        enter = out.find(b"@PJL ENTER LANGUAGE=POSTSCRIPT\n")
        self.assertGreater(enter, 0, visible(out[:3000]))
        head = out[:enter]
        self.assertTrue(head.startswith(UEL + b"@PJL SET STRINGCODESET=UTF8\n@PJL JOB MODE=PRINTER\r\n"),
                        visible(head))
        for line, count in ((b'@PJL SET JOBATTR="@GRGU=OFF"\n', 1),   # no grey balance option
                            (b'@PJL SET JOBATTR="@TRAP=ON"\n', 1),
                            (b'@PJL SET JOBATTR="@TRAP=OFF"\n', 0),
                            (b"@PJL SET BITSPERPIXEL=1\n", 1),
                            (b'@PJL SET JOBATTR="@AJMH=0"\n', 1),
                            (b'@PJL SET JOBATTR="@PSBR=0"\n', 1),     # the PPD default
                            (b"@PJL COMMENT PRINTJOBINFO", 0)):
            with self.subTest(line=line):
                self.assertEqual(count, head.count(line), visible(head))
        self.assertTrue(out.endswith(b"%%EOF\n" + TRAILER), visible(out[-200:]))


if __name__ == "__main__":
    ARGS = cups_instance.arguments()
    cups_instance.run_tests(ARGS)
