"""Private CUPS set-ups for the deployment tests.

A test installs the build into a directory of its own (DESTDIR), assembles a
private CUPS server-bin directory that holds the system's filters and the
installed pstozpjl, and, for a live queue, runs a private cupsd on a loopback
port with its own configuration, spool, state and log directories. Nothing of
the machine's own CUPS set-up is read or changed.
"""

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

# The user cupsd runs filters as.
FILTER_USER = "lp"


class DeployError(Exception):
    pass


def arguments():
    """The --build and --source directories a deployment test is given, as
    absolute paths; other arguments are unittest's."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True)
    parser.add_argument("--source", required=True)
    args, rest = parser.parse_known_args()
    args.build, args.source = os.path.abspath(args.build), os.path.abspath(args.source)
    args.unittest_argv = [sys.argv[0]] + rest
    return args


def run_tests(args, exit=True):
    """Runs the test cases of the calling script."""
    return unittest.main(module="__main__", argv=args.unittest_argv, exit=exit, verbosity=2)


def run(command, env=None, timeout=120, check=True, input=None):
    """Runs a command, returns the CompletedProcess (output as bytes)."""
    result = subprocess.run(command, env=env, timeout=timeout, input=input,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
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


def filter_user_can_enter(path):
    """True when the filter user may reach `path` (always so when not root,
    since cupsd then runs its filters as the user who started it)."""
    if os.geteuid() != 0:
        return True
    result = run(["runuser", "-u", FILTER_USER, "--", "test", "-x", path, "-a", "-r", path],
                 check=False)
    return result.returncode == 0


def private_directory(build_dir, prefix):
    """A new directory for one test run, mode 0755: in the build tree when the
    filter user can reach it there, else in the temporary directory."""
    base = build_dir if filter_user_can_enter(build_dir) else tempfile.gettempdir()
    path = tempfile.mkdtemp(prefix=prefix, dir=base)
    os.chmod(path, 0o755)
    return path


class Installation:
    """The files `cmake --install` put under `destdir`, located through the
    build's install settings."""

    def __init__(self, build_dir, destdir, prefix=None):
        paths = read_install_paths(build_dir)
        prefix = prefix or paths["prefix"]

        def located(directory):
            if not os.path.isabs(directory):
                directory = os.path.join(prefix, directory)
            return destdir + directory

        self.destdir = destdir
        self.filter = os.path.join(located(paths["filter_dir"]), "pstozpjl")
        self.model_dir = located(paths["model_dir"])
        self.man_page = os.path.join(located(paths["man_dir"]), "pstozpjl.8")

    def ppd(self, name):
        return os.path.join(self.model_dir, name)


def read_install_paths(build_dir):
    """The install directories the build configured (install-paths.txt)."""
    values = {}
    with open(os.path.join(build_dir, "install-paths.txt"), encoding="utf-8") as paths:
        for line in paths:
            name, _, value = line.rstrip("\n").partition("=")
            values[name] = value
    return values


def install(build_dir, destdir, prefix=None):
    """`cmake --install` of the build into `destdir`."""
    env = dict(os.environ, DESTDIR=destdir)
    command = ["cmake", "--install", build_dir]
    if prefix is not None:
        command += ["--prefix", prefix]
    run(command, env=env)
    return Installation(build_dir, destdir, prefix)


def make_serverbin(root, filter_path):
    """A server-bin directory for a private CUPS: the system's programs
    through links, and a copy of `filter_path` among the filters. CUPS runs
    only programs owned by root that others cannot write, so the copy and the
    directories get mode 0755."""
    system = cups_serverbin()
    serverbin = os.path.join(root, "serverbin")
    os.mkdir(serverbin, 0o755)
    for entry in sorted(os.listdir(system)):
        if entry == "filter":
            filters = os.path.join(serverbin, "filter")
            os.mkdir(filters, 0o755)
            for name in sorted(os.listdir(os.path.join(system, "filter"))):
                os.symlink(os.path.join(system, "filter", name), os.path.join(filters, name))
            copy = os.path.join(filters, "pstozpjl")
            shutil.copyfile(filter_path, copy)
            os.chmod(copy, 0o755)
            os.chmod(filters, 0o755)
        else:
            os.symlink(os.path.join(system, entry), os.path.join(serverbin, entry))
    os.chmod(serverbin, 0o755)
    return serverbin


def write_cups_files_conf(path, root, serverbin):
    """The cups-files.conf of a private CUPS rooted at `root`."""
    lines = [
        "ServerRoot %s/etc" % root,
        "ServerBin %s" % serverbin,
        "RequestRoot %s/spool" % root,
        "TempDir %s/spool/tmp" % root,
        "CacheDir %s/cache" % root,
        "StateDir %s/run" % root,
        "AccessLog %s/log/access_log" % root,
        "ErrorLog %s/log/error_log" % root,
        "PageLog %s/log/page_log" % root,
        "Printcap %s/run/printcap" % root,
        # Queues that print into a file.
        "FileDevice Yes",
        "LogFilePerm 0644",
    ]
    if os.geteuid() == 0:
        lines += ["User %s" % FILTER_USER, "Group %s" % FILTER_USER, "SystemGroup root"]
    with open(path, "w", encoding="utf-8") as out:
        out.write("\n".join(lines) + "\n")


def free_loopback_port():
    with socket.socket(socket.AF_INET, socket.SOCK_STREAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def _die_with_parent():
    # PR_SET_PDEATHSIG: the daemon gets SIGTERM when the test process dies,
    # even when a test runner kills it outright.
    ctypes.CDLL(None, use_errno=True).prctl(1, signal.SIGTERM, 0, 0, 0)


class Scheduler:
    """A private cupsd in the foreground, on a loopback port.

    The daemon is a copy of the system's cupsd: the mandatory access control
    profile that a Debian system loads for its cupsd is bound to the binary's
    path and confines it to the system's own CUPS directories.
    """

    def __init__(self, root, serverbin):
        self.root = root
        self.serverbin = serverbin
        self.process = None
        self.port = None
        for sub in ("etc", "spool", "spool/tmp", "cache", "run", "log", "bin", "out"):
            os.makedirs(os.path.join(root, sub), exist_ok=True)
        self.cupsd = os.path.join(root, "bin", "cupsd")
        shutil.copy2(shutil.which("cupsd") or "/usr/sbin/cupsd", self.cupsd)
        self.files_conf = os.path.join(root, "etc", "cups-files.conf")
        write_cups_files_conf(self.files_conf, root, serverbin)
        self.error_log = os.path.join(root, "log", "error_log")
        self.daemon_log = os.path.join(root, "log", "cupsd.out")

    @property
    def server(self):
        return "127.0.0.1:%d" % self.port

    def client_env(self):
        env = {k: v for k, v in os.environ.items() if not k.startswith("CUPS_")}
        env["CUPS_SERVER"] = self.server
        return env

    def _write_cupsd_conf(self):
        # A fixed server name spares the daemon a host name lookup, which can
        # hang on a machine without network.
        conf = """LogLevel debug
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
""".format(port=self.port)
        path = os.path.join(self.root, "etc", "cupsd.conf")
        with open(path, "w", encoding="utf-8") as out:
            out.write(conf)
        return path

    def start(self, timeout=30, attempts=3):
        """Starts the daemon and waits until it answers; another port is
        tried when the daemon ends at once (a port taken meanwhile)."""
        failures = []
        for _ in range(attempts):
            self.port = free_loopback_port()
            conf = self._write_cupsd_conf()
            with open(self.daemon_log, "ab") as log:
                self.process = subprocess.Popen(
                    [self.cupsd, "-f", "-c", conf, "-s", self.files_conf],
                    stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                    env=self.client_env(), preexec_fn=_die_with_parent)
            if self._wait_ready(timeout):
                return
            failures.append(self.log_tail())
            self.stop()
        raise DeployError("cupsd did not start:\n" + "\n---\n".join(failures))

    def _wait_ready(self, timeout):
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            if self.process.poll() is not None:
                return False
            result = run(["lpstat", "-h", self.server, "-r"], env=self.client_env(),
                         timeout=10, check=False)
            if result.returncode == 0 and b"scheduler is running" in result.stdout:
                return True
            time.sleep(0.2)
        return False

    def stop(self, timeout=15):
        """Stops the daemon by its PID: SIGTERM, then SIGKILL."""
        if self.process is None:
            return
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(timeout)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait(timeout)
        self.process = None

    def client(self, command, timeout=60, check=True):
        """Runs a CUPS client command against this daemon."""
        return run(command, env=self.client_env(), timeout=timeout, check=check)

    def add_queue(self, name, ppd, device_file):
        self.client(["lpadmin", "-h", self.server, "-p", name, "-E",
                     "-v", "file://" + device_file, "-P", ppd])

    def submit(self, queue, path, user, title, options):
        """Submits a job with `lp`; returns its job id."""
        command = ["lp", "-h", self.server, "-d", queue, "-U", user, "-t", title]
        for name, value in options:
            command += ["-o", "%s=%s" % (name, value)]
        command.append(path)
        output = self.client(command).stdout.decode()
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
            if self.process is None or self.process.poll() is not None:
                raise DeployError("cupsd ended during the job:\n" + self.log_tail())
            time.sleep(0.25)
        raise DeployError("job %d did not end within %d s:\n%s" % (job_id, timeout, self.log_tail()))

    def log(self):
        try:
            with open(self.error_log, encoding="utf-8", errors="replace") as log:
                return log.read()
        except FileNotFoundError:
            return ""

    def log_tail(self, lines=60):
        text = self.log()
        try:
            with open(self.daemon_log, encoding="utf-8", errors="replace") as log:
                text += log.read()
        except FileNotFoundError:
            pass
        return "\n".join(text.splitlines()[-lines:])
