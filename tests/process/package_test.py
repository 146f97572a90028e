# SPDX-License-Identifier: Apache-2.0
"""Packs the content of BUILD, unpacks it into an empty root, checks it and runs the product there.

    package_test.py BUILD
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from product import Product

BUILD = pathlib.Path(sys.argv[1])
EXPOSURE = 1.5


def output(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, cwd=BUILD).stdout


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        output("cpack", "-B", str(cls.folder / "packages"))
        cls.packages = sorted((cls.folder / "packages").glob("*.deb"))
        cls.root = cls.folder / "root"
        for package in cls.packages:
            output("dpkg-deb", "-x", str(package), str(cls.root))

    def test_lintian_finds_no_error(self):
        names = [output("dpkg-deb", "-f", str(package), "Package").strip() for package in self.packages]
        self.assertEqual(names, ["trellan-service", "trellan-simulators"])
        output("lintian", "--allow-root", "--fail-on", "error", *map(str, self.packages))

    def test_units_are_whole_and_shut_in(self):
        units = sorted((self.root / "usr/lib/systemd/system").glob("*.service"))
        self.assertEqual(len(units), 5)
        for unit in units:
            command = re.search("^ExecStart=(.*)$", unit.read_text(), re.MULTILINE)[1].split()
            for word in filter(lambda word: word.startswith("/"), command):
                self.assertTrue((self.root / word[1:]).exists(), word)
            judged = output("systemd-analyze", "security", "--offline=true", "--no-pager", str(unit))
            level = float(re.search(r"Overall exposure level for \S+: ([\d.]+)", judged)[1])
            self.assertLessEqual(level, EXPOSURE, unit.name)

    def test_completes_what_help_names(self):
        completion = self.root / "usr/share/bash-completion/completions/ProductController"
        said = subprocess.run(
            ["bash", "-c", f"source {completion}; COMP_WORDS=(ProductController wa); COMP_CWORD=1; "
             "_trellan_complete ProductController; echo ${COMPREPLY[@]}"],
            env={"PATH": f"{self.root}/usr/bin:{os.environ['PATH']}"}, text=True, check=True,
            stdout=subprocess.PIPE).stdout
        self.assertEqual(said, "watch\n")

    def test_runs_from_where_it_was_unpacked(self):
        shared = self.root / "usr/share/trellan"
        product = Product(self.root / "usr/bin", self.root)
        self.addCleanup(product.end)
        product.bring_up("--web", str(shared / "web"), devices=str(shared / "living-room.json"))
        controller = [str(self.root / "usr/bin/ProductController")]
        environment = {"ORLU_ROOT": str(self.root)}
        subprocess.run([*controller, "sources", "T2051"], env=environment, check=True,
                       stdout=subprocess.DEVNULL)
        product.wait_for(product.programs["TrellanService"], "Setting send key state to 1")
        subprocess.run([*controller, "key", "T2051", "tv_power"], env=environment, check=True,
                       stdout=subprocess.DEVNULL)
        self.assertIn('"power":true', product.wait_for(product.programs["LpmService"], '"state"'))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
