"""Private CUPS set-ups for the deployment tests: the build installed into a
directory of its own, a server-bin directory with the system's filters and
pstozpjl, a cupsd on a loopback port; the machine's own CUPS is left alone."""

import argparse
import ctypes
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

FILTER_USER = "lp"


class DeployError(Exception):
    pass


def arguments():
    """--build and --source as absolute paths; the rest is unittest's."""
    parser = argparse.ArgumentParser()
    for name in ("--build", "--source"):
        parser.add_argument(name, required=True)
    args, rest = parser.parse_known_args()
    args.build, args.source = os.path.abspath(args.build), os.path.abspath(args.source)
    args.unittest_argv = [sys.argv[0]] + rest
    return args


def run_tests(args, exit=True):
    return unittest.main(module="__main__", argv=args.unittest_argv, exit=exit, verbosity=2)


def run(command, env=None, timeout=120, check=True):
    result = subprocess.run(command, env=env, timeout=timeout, capture_output=True)
    if check and result.returncode != 0:
        raise DeployError("%s failed with %d:\n%s%s" % (
            " ".join(command), result.returncode,
            result.stdout.decode(errors="replace"), result.stderr.decode(errors="replace")))
    return result


def cups_serverbin():
    """The system's CUPS server-bin directory, as the build found it."""
    result = run(["pkg-config", "--variable=cups_serverbin", "cups"], check=False)
    path = result.stdout.decode().strip()
    if result.returncode != 0 or not path:
        path = run(["cups-config", "--serverbin"]).stdout.decode().strip()
    return path


def private_directory(build_dir, prefix):
    """A new directory for one test run, mode 0755: in the build tree when the
    filter user (as root; else cupsd's own user) can reach it, else in /tmp."""
    base = build_dir if os.geteuid() != 0 or run(
        ["runuser", "-u", FILTER_USER, "--", "test", "-x", build_dir, "-a", "-r", build_dir],
        check=False).returncode == 0 else tempfile.gettempdir()
    path = tempfile.mkdtemp(prefix=prefix, dir=base)
    os.chmod(path, 0o755)
    return path


class Installation:
    """The files `cmake --install` put under `destdir`."""

    def __init__(self, build_dir, destdir, prefix=None):
        paths = read_install_paths(build_dir)
        located = lambda d: destdir + os.path.join(prefix or paths["prefix"], d)  # noqa: E731
        self.destdir = destdir
        self.filter = os.path.join(located(paths["filter_dir"]), "pstozpjl")
        self.model_dir = located(paths["model_dir"])

    def ppd(self, name):
        return os.path.join(self.model_dir, name)


def read_install_paths(build_dir):
    """The install directories the build configured (install-paths.txt)."""
    with open(os.path.join(build_dir, "install-paths.txt"), encoding="utf-8") as paths:
        return dict(line.rstrip("\n").partition("=")[::2] for line in paths)


def install(build_dir, destdir, prefix=None):
    """`cmake --install` of the build into `destdir`."""
    run(["cmake", "--install", build_dir] + (["--prefix", prefix] if prefix else []),
        env=dict(os.environ, DESTDIR=destdir))
    return Installation(build_dir, destdir, prefix)


def make_serverbin(root, filter_path):
    """The system's server-bin programs through links, with a copy of
    `filter_path` among the filters; CUPS runs only root-owned programs others
    cannot write, hence mode 0755."""
    system = cups_serverbin()
    serverbin = os.path.join(root, "serverbin")
    filters = os.path.join(serverbin, "filter")
    os.makedirs(filters, 0o755)
    for entry in os.listdir(system):
        if entry != "filter":
            os.symlink(os.path.join(system, entry), os.path.join(serverbin, entry))
    for name in os.listdir(os.path.join(system, "filter")):
        os.symlink(os.path.join(system, "filter", name), os.path.join(filters, name))
    shutil.copyfile(filter_path, os.path.join(filters, "pstozpjl"))
    for path in (serverbin, filters, os.path.join(filters, "pstozpjl")):
        os.chmod(path, 0o755)
    return serverbin


FILES_CONF = """ServerRoot {root}/etc
ServerBin {serverbin}
RequestRoot {root}/spool
TempDir {root}/spool/tmp
CacheDir {root}/cache
StateDir {root}/run
AccessLog {root}/log/access_log
ErrorLog {root}/log/error_log
PageLog {root}/log/page_log
Printcap {root}/run/printcap
FileDevice Yes
LogFilePerm 0644
"""

# A fixed server name spares the daemon a host name lookup, which can hang on
# a machine without network.
CUPSD_CONF = """LogLevel debug
MaxLogSize 0
Listen 127.0.0.1:{port}
ServerName localhost
ServerAlias *
Browsing No
BrowseLocalProtocols none
WebInterface No
DefaultAuthType None
DefaultEncryption Never
ErrorPolicy abort-job
PreserveJobHistory Yes
<Location />
  Order allow,deny
  Allow from 127.0.0.1
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
"""


def _die_with_parent():
    # PR_SET_PDEATHSIG: the daemon gets SIGTERM when the test process dies.
    ctypes.CDLL(None, use_errno=True).prctl(1, signal.SIGTERM, 0, 0, 0)


class Scheduler:
    """A private cupsd in the foreground on a loopback port: a copy of the
    system's, since the access control profile a Debian system loads for its
    cupsd is bound to the binary's path."""

    def __init__(self, root, serverbin):
        self.root, self.process = root, None
        for sub in ("etc", "spool/tmp", "cache", "run", "log", "bin", "out"):
            os.makedirs(os.path.join(root, sub), exist_ok=True)
        self.cupsd = os.path.join(root, "bin", "cupsd")
        shutil.copy2(shutil.which("cupsd") or "/usr/sbin/cupsd", self.cupsd)
        self.files_conf = os.path.join(root, "etc", "cups-files.conf")
        with open(self.files_conf, "w", encoding="utf-8") as out:
            out.write(FILES_CONF.format(root=root, serverbin=serverbin))
            if os.geteuid() == 0:
                out.write("User {0}\nGroup {0}\nSystemGroup root\n".format(FILTER_USER))
        self.error_log = os.path.join(root, "log", "error_log")
        self.daemon_log = os.path.join(root, "log", "cupsd.out")

    @property
    def server(self):
        return "127.0.0.1:%d" % self.port

    def client(self, command, timeout=60, check=True):
        """Runs a CUPS client command against this daemon."""
        env = {k: v for k, v in os.environ.items() if not k.startswith("CUPS_")}
        return run(command, env=dict(env, CUPS_SERVER=self.server), timeout=timeout, check=check)

    def start(self, timeout=30):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        conf = os.path.join(self.root, "etc", "cupsd.conf")
        with open(conf, "w", encoding="utf-8") as out:
            out.write(CUPSD_CONF.format(port=self.port))
        with open(self.daemon_log, "ab") as log:
            self.process = subprocess.Popen([self.cupsd, "-f", "-c", conf, "-s", self.files_conf],
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                            preexec_fn=_die_with_parent)
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline and self.process.poll() is None:
            if b"scheduler is running" in self.client(["lpstat", "-r"], 10, False).stdout:
                return
            time.sleep(0.2)
        raise DeployError("cupsd did not start:\n" + self.log_tail())

    def stop(self, timeout=15):
        """Stops the daemon by its PID: SIGTERM, then SIGKILL."""
        if self.process is not None and self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(timeout)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait(timeout)

    def add_queue(self, name, ppd, device_file):
        self.client(["lpadmin", "-p", name, "-E", "-v", "file://" + device_file, "-P", ppd])

    def submit(self, queue, path, user, title, options):
        """Submits a job with `lp`; returns its job id."""
        command = ["lp", "-d", queue, "-U", user, "-t", title]
        for option in options:
            command += ["-o", "%s=%s" % option]
        output = self.client(command + [path]).stdout.decode()
        match = re.search(r"request id is %s-(\d+)" % re.escape(queue), output)
        if match is None:
            raise DeployError("lp gave no job id: " + output)
        return int(match.group(1))

    def wait_for_job(self, job_id, timeout=120):
        """Waits until the error log tells how the job ended; returns that
        word (completed, aborted, stopped, canceled)."""
        pattern = re.compile(r"\[Job %d\] Job (completed|aborted|stopped|canceled)" % job_id)
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            match = pattern.search(self.log())
            if match:
                return match.group(1)
            if self.process.poll() is not None:
                raise DeployError("cupsd ended during the job:\n" + self.log_tail())
            time.sleep(0.25)
        raise DeployError("job %d did not end within %d s:\n%s" % (job_id, timeout, self.log_tail()))

    def log(self, path=None):
        try:
            with open(path or self.error_log, encoding="utf-8", errors="replace") as log:
                return log.read()
        except FileNotFoundError:
            return ""

    def log_tail(self, lines=60):
        return "\n".join((self.log() + self.log(self.daemon_log)).splitlines()[-lines:])
