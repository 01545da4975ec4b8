"""The Debian package: cpack -G DEB builds it from the build tree; its
dependencies and an install and removal with dpkg into a private
root directory (the machine's own package database is not touched).

    package_test.py --build BUILD_DIR --source SOURCE_DIR
"""

import glob
import os
import re
import shutil
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import cups_instance  # noqa: E402

ARGS = None
PACKAGE = "pstozpjl"


def package_of(library_path):
    """The installed Debian package that ships `library_path`."""
    result = cups_instance.run(["dpkg-query", "-S", os.path.realpath(library_path)], check=False)
    if result.returncode != 0:
        result = cups_instance.run(["dpkg-query", "-S", library_path])
    return result.stdout.decode().split(":")[0]


def needed_libraries(binary):
    """{soname: resolved path} of the shared libraries `binary` links."""
    needed = set(re.findall(r"(?m)^\s+NEEDED\s+(\S+)$",
                            cups_instance.run(["objdump", "-p", binary]).stdout.decode()))
    return {soname: path for soname, path in re.findall(
        r"(?m)^\s*(\S+) => (/\S+)", cups_instance.run(["ldd", binary]).stdout.decode()) if soname in needed}


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = cups_instance.private_directory(ARGS.build, "package-")
        cls.addClassCleanup(shutil.rmtree, cls.work, True)
        cups_instance.run(["cpack", "-G", "DEB", "--config",
                           os.path.join(ARGS.build, "CPackConfig.cmake"), "-B", cls.work],
                          timeout=600)
        debs = glob.glob(os.path.join(cls.work, "*.deb"))
        assert len(debs) == 1, debs
        cls.deb = debs[0]

    def field(self, name):
        return cups_instance.run(["dpkg-deb", "--field", self.deb, name]).stdout.decode().strip()

    def test_depends_on_cups_and_on_every_library_the_filter_links(self):
        depends = {re.split(r"[ (]", d.strip())[0] for d in self.field("Depends").split(",")}
        filter_path = os.path.join(ARGS.build, "pstozpjl")
        wanted = {"cups-daemon", "cups-filters"}
        wanted.update(package_of(path) for path in needed_libraries(filter_path).values())
        self.assertIn("libcups2", wanted)
        for package in sorted(wanted):
            with self.subTest(package):
                self.assertIn(package, depends)

    def test_installs_and_removes_cleanly(self):
        root = os.path.join(self.work, "root")
        admin = os.path.join(root, "var", "lib", "dpkg")
        for sub in ("info", "updates", "triggers"):
            os.makedirs(os.path.join(admin, sub))
        for name in ("status", "available"):
            open(os.path.join(admin, name), "w").close()
        dpkg = ["dpkg", "--root=" + root, "--force-depends", "--force-not-root"]

        def status():
            return cups_instance.run(["dpkg-query", "--admindir=" + admin, "-W", "-f=${Status}",
                                      PACKAGE], check=False).stdout.decode()
        cups_instance.run(dpkg + ["--install", self.deb])
        self.assertEqual("install ok installed", status())
        # The layout itself is install_test's; here the filter must be where CUPS runs it.
        paths = cups_instance.read_install_paths(ARGS.build)
        installed = root + os.path.join(paths["prefix"], paths["filter_dir"], "pstozpjl")
        self.assertEqual(0o755, os.stat(installed).st_mode & 0o7777)

        cups_instance.run(dpkg + ["--remove", PACKAGE])
        self.assertNotIn("installed", status().replace("not-installed", ""))
        left = [os.path.join(d, n) for d, dirs, files in os.walk(root)
                for n in dirs + files if not os.path.join(d, n).startswith(os.path.join(root, "var"))]
        self.assertEqual([], left)


if __name__ == "__main__":
    ARGS = cups_instance.arguments()
    cups_instance.run_tests(ARGS)
