"""A live print queue: the installed filter and sample PPDs under a private
cupsd, jobs submitted with lp, the print streams captured by file devices.

    live_queue_test.py --build BUILD_DIR --source SOURCE_DIR
"""

import os
import re
import shutil
import socket
import subprocess
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "tools")]
import cups_instance  # noqa: E402
import sealed_blob  # noqa: E402

UEL = b"\x1b%-12345X"
TRAILER = UEL + b"@PJL EOJ\n"
ENTER_PS = b"@PJL ENTER LANGUAGE=POSTSCRIPT\n"
PREFIX = "com.korvanel.qd.jtz.printsettings."

ARGS = None
TITLE = "Live job"
USER = "alice"
SECURE_PASSWORD = "4711"
ACCOUNT_PASSWORD = "s3cret"

# What the production printer's job asks for: a secure print held for alice,
# accounting on an entered user ID with password and account, a text
# watermark on every page, stapling and two-sided printing.
PRODUCTION_TICKET = [(PREFIX + name, value) for name, value in (item.split("=") for item in """
    PrintTypeTicketKey=2 PrintTypeUserNameTicketKey=alice PrintTypePasswordTicketKey=<secure>
    DocumentNameTypeTicketKey=1 JBAManageTypeListTicketKey=2 JBAUserSettingRadioBtnTicket=1
    JBAUserIDListCtrlTicket=2 JBAUserIDTextEditTicket=acct-7 JBAAccountIDTextEditTicket=4242
    JBAUserPasswordTextEditTicket=<account> WMARKNameTicket=Confidential WMARKTypeTicket=0
    WMARKOnlyFirstTicket=0 WMARKTextTicket=(CONFIDENTIAL) WMARKFontTicket=Courier
    WMARKFontSizeTicket=48 WMARKColorRTicket=1.0 WMARKColorGTicket=0.0 WMARKColorBTicket=0.0
    WMARKDensityTicket=50 WMARKAngleTicket=45 WMARKOrientationTicket=1 WMARKPaperWidthTicket=612
    WMARKPaperHeightTicket=792 WMARKWidthTicket=200 WMARKHeightTicket=20 WMARKhOffsetTicket=0
    WMARKvOffsetTicket=0""".split())] + [("KRStaple", "UpperLeftSingle"), ("sides", "two-sided-long-edge")]

# The device settings of the insertion-mode printer's job, as PPD choices.
INSERTION_OPTIONS = [("KRSetTrapMode", "True"), ("KRBrightnes", "Dark2"),
                     ("KRColorDensityCyanLow", "-2"), ("KRTonerSaver", "Mode2")]

# Pages that end inside a procedure: the filter counts the page comments.
THREE_PAGE_JOB = "".join(
    ["%!PS-Adobe-3.0\n%%Pages: 3\n%%EndComments\n%%BeginProlog\n/EP{showpage}bind def\n"
     "%%EndProlog\n"] +
    ["%%%%Page: %d %d\n/Courier findfont 24 scalefont setfont 72 720 moveto (Page %s) show EP\n"
     % (n, n, word) for n, word in ((1, "one"), (2, "two"), (3, "three"))] + ["%%EOF\n"])

# What the scheduler counted for a job.
GET_JOB_TEST = """{
OPERATION Get-Job-Attributes
GROUP operation-attributes-tag
ATTR charset attributes-charset utf-8
ATTR naturalLanguage attributes-natural-language en
ATTR uri job-uri $uri
ATTR name requesting-user-name %s
ATTR keyword requested-attributes job-media-sheets-completed
STATUS successful-ok
DISPLAY job-media-sheets-completed
}
""" % USER


def visible(data):
    """The bytes with ESC, CR and other control bytes made visible."""
    return "".join("<ESC>" if b == 0x1B else "\\r" if b == 0x0D else "\n" if b == 0x0A else
                   chr(b) if 0x20 <= b < 0x7F else "<%02X>" % b for b in data)


class LiveQueueTest(unittest.TestCase):
    root = None

    @classmethod
    def setUpClass(cls):
        cls.key_dir = os.path.join(ARGS.source, "keys")
        cls.private_key = os.path.join(ARGS.source, "tests", "fixtures", "keys",
                                       "recipient-2048.key.pem")
        LiveQueueTest.root = cups_instance.private_directory(ARGS.build, "live-cups-")
        cls.installation = cups_instance.install(ARGS.build, os.path.join(cls.root, "dest"))
        serverbin = cups_instance.make_serverbin(cls.root, cls.installation.filter)
        cls.cups = cups_instance.Scheduler(cls.root, serverbin)
        cls.addClassCleanup(cls.cups.stop)
        cls.cups.start()

        def stored(password):  # as the print dialog stores it in the ticket
            return subprocess.run([sys.executable, os.path.join(ARGS.source, "scripts", "stored-password"),
                                   password, cls.key_dir], stdout=subprocess.PIPE,
                                  check=True).stdout.decode().strip()
        passwords = {"<secure>": SECURE_PASSWORD, "<account>": ACCOUNT_PASSWORD}
        ticket = [(name, stored(passwords[value]) if value in passwords else value)
                  for name, value in PRODUCTION_TICKET]
        three_pages = os.path.join(cls.root, "three-page-job.ps")
        with open(three_pages, "w", encoding="ascii") as out:
            out.write(THREE_PAGE_JOB)
        captured = {}
        for queue, ppd, job, options in (
                ("production", "zpjl-color-production.ppd",
                 os.path.join(ARGS.source, "tests", "fixtures", "ps", "two-page-job.ps"), ticket),
                ("insertion", "zpjl-color-office-insertion.ppd", three_pages, INSERTION_OPTIONS)):
            device = os.path.join(cls.root, "out", queue + ".prn")
            cls.cups.add_queue("zpjl-" + queue, cls.installation.ppd(ppd), device)
            job_id = cls.cups.submit("zpjl-" + queue, job, USER, TITLE, options)
            setattr(cls, queue + "_job", job_id)
            setattr(cls, queue + "_end", cls.cups.wait_for_job(job_id))
            captured[queue] = device
        cls.log = cls.cups.log()
        cls.page_log = cls.cups.log(os.path.join(cls.root, "log", "page_log"))
        with open(captured["production"], "rb") as production:
            data = production.read()
        enter, end = data.find(ENTER_PS) + len(ENTER_PS), data.rfind(UEL)
        assert len(ENTER_PS) <= enter <= end, visible(data[:400])
        cls.header, cls.body, cls.trailer = data[:enter], data[enter:end], data[end:]
        with open(captured["insertion"], "rb") as insertion:
            cls.insertion = insertion.read()

    def test_cups_completed_both_jobs(self):
        for job, end in ((self.production_job, self.production_end),
                         (self.insertion_job, self.insertion_end)):
            with self.subTest(job=job):
                self.assertEqual("completed", end, self.cups.log_tail())
                self.assertIn("[Job %d] Job completed." % job, self.log)
                self.assertRegex(self.log, r"\[Job %d\] PID \d+ \(\S+/filter/pstozpjl\) exited "
                                           r"with no errors\." % job)
        # A sanitizer build of the filter reports to the scheduler's log.
        for finding in ("Sanitizer", "runtime error"):
            with self.subTest(finding):
                self.assertNotIn(finding, self.log)

    def test_cups_counted_each_page_once(self):
        # pstops, before the filter in the chain, leaves the page log to it.
        test = os.path.join(self.root, "get-job.test")
        with open(test, "w", encoding="ascii") as out:
            out.write(GET_JOB_TEST)
        # The production job's two pages go on both sides of one sheet.
        for queue, job, pages, sheets in (("zpjl-production", self.production_job, 2, 1),
                                          ("zpjl-insertion", self.insertion_job, 3, 3)):
            with self.subTest(queue=queue):
                self.assertRegex(self.page_log,
                                 r"(?m)^%s %s %d \[[^]]+\] total %d " % (queue, USER, job, pages))
                uri = "ipp://%s/jobs/%d" % (self.cups.server, job)
                shown = self.cups.client(["ipptool", uri, test]).stdout.decode()
                self.assertRegex(shown, r"job-media-sheets-completed\n-+\n%d\s" % sheets)

    def test_production_header(self):
        # Line by line the header is the whole-stream tables' business; here:
        # the ticket CUPS passed reached every module.
        lines = self.header.splitlines(keepends=True)
        self.assertTrue(lines[0].startswith(UEL + b"@PJL SET STRINGCODESET=UTF8\n"))
        self.assertEqual(ENTER_PS, lines[-1])
        for line in (b"@PJL SET HOLD=STORE\n", b'@PJL SET JOBNAME="Live job"\r\n',
                     b'@PJL SET JOBATTR="@JOAU=acct-7"\r\n', b"@PJL COMMENT PRINTJOBINFO STAPLE=ON\n",
                     b"@PJL COMMENT PRINTJOBINFO DUPLEXTYPE=DUPLEX\n"):
            with self.subTest(line):
                self.assertIn(line, lines)

    def test_production_passwords_are_sealed_for_the_printer(self):
        with open(os.path.join(self.key_dir, "recipient-2048.sha256"), encoding="ascii") as digest:
            recipient = bytes.fromhex(digest.read().strip())
        header = self.header
        for name, password in ((b'HOLDENCRYPTKEY="', SECURE_PASSWORD), (b'"@JOEP=', ACCOUNT_PASSWORD)):
            with self.subTest(line=name):
                fields = re.findall(re.escape(name) + rb'([^"]*)"', header)
                self.assertEqual(1, len(fields), visible(header))
                self.assertEqual(492, len(fields[0]))
                opened = sealed_blob.open_field(fields[0], self.private_key)
                self.assertEqual(recipient, opened["digest"])
                self.assertEqual(password.encode(), opened["payload"])

    def test_production_postscript(self):
        body = self.body
        self.assertTrue(body.startswith(b"%!PS-Adobe-3.0\n"), visible(body))
        self.assertEqual(2, body.count(b"(CONFIDENTIAL) show\n"), visible(body))
        self.assertTrue(body.endswith(b"%%EOF\n\x04"), visible(body))
        self.assertEqual(TRAILER, self.trailer)

    def test_insertion_header_and_feature_lines(self):
        stream = self.insertion
        enter = stream.find(ENTER_PS)
        self.assertGreater(enter, 0, visible(stream[:2000]))
        lines = stream[:enter].splitlines(keepends=True)
        header = [
            UEL + b"@PJL SET STRINGCODESET=UTF8\n",
            b"@PJL JOB MODE=PRINTER\r\n",
            b'@PJL SET JOBATTR="@CNAM=' + socket.gethostname()[:32].encode() + b'"\n',
            b'@PJL SET JOBATTR="@LUNA=alice"\n',
            b'@PJL SET JOBATTR="@NLPP=N1"\n',
            b'@PJL SET JOBATTR="@JOAU=alice"\r\n',
            b'@PJL SET JOBATTR="@ACNA=Live job"\r\n',
            b'@PJL SET JOBATTR="@DIND=PORTRAIT"\n',
            # the toner saver choice also reaches the header as a job option
            b"@PJL SET ECONOMODE=MODE2\n",
            b"@PJL SET REDUCTIONRATE=0\n",
            b"@PJL SET RENDERMODE=COLOR\n",
        ]
        self.assertEqual(header, lines[:len(header)], visible(stream[:enter]))
        # Then the PJL of the feature code CUPS wrote, in CUPS's order: first
        # the default of the grey balance option the PPD lacks, then a line
        # for each chosen or default device setting.
        features = lines[len(header):]
        self.assertEqual(b'@PJL SET JOBATTR="@GRGU=OFF"\n', features[0] if features else None,
                         visible(stream[:enter]))
        density = {"CL": 1}
        expected = [b"@PJL SET BITSPERPIXEL=8\n", b"@PJL SET RET=ON\n", b"@PJL SET ECONOMODE=MODE2\n"]
        expected += [b'@PJL SET JOBATTR="@%s"\n' % attr for attr in (
            b"TRAP=ON", b"PSBR=-2", b"RGBP=SRGB", b"RGBG=18", b"BSPM=OFF", b"DDPM=AUTO", b"SBKP=OFF")]
        expected += [b'@PJL SET JOBATTR="@AJ%s%s=%d"\n' % (c.encode(), b.encode(), density.get(c + b, 3))
                     for c in "CMYK" for b in "LMH"]
        self.assertEqual(sorted(expected), sorted(features[1:]), visible(stream[:enter]))

        body = stream[enter:]
        cases = [
            ("PostScript follows the language switch",
             body.startswith(ENTER_PS + b"%!PS-Adobe-3.0\n"), True),
            ("one language switch", stream.count(ENTER_PS), 1),
            ("feature code passes on", body.count(b"%%BeginFeature: *KRSetTrapMode True\n"), 1),
            ("the last page", body.count(b"(Page three) show EP\n"), 1),
            ("no Ctrl-D in this mode", body.count(b"\x04"), 0),
            ("trailer", body.endswith(b"%%EOF\n" + TRAILER), True),
        ]
        for name, actual, expected in cases:
            with self.subTest(name):
                self.assertEqual(expected, actual, visible(body[-400:]))


if __name__ == "__main__":
    ARGS = cups_instance.arguments()
    if os.geteuid() != 0:  # cupsd switches to the filter user as root only
        print("SKIP: the live queue test runs a cupsd and needs root")
        sys.exit(77)
    success = cups_instance.run_tests(ARGS, exit=False).result.wasSuccessful()
    if LiveQueueTest.root is not None:
        if success:
            shutil.rmtree(LiveQueueTest.root, ignore_errors=True)
        else:
            print("The private CUPS set-up stays in %s for a look." % LiveQueueTest.root)
    sys.exit(0 if success else 1)
