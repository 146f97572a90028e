# SPDX-License-Identifier: Apache-2.0
"""A product of the real programs, in a folder of its own."""
import json
import os
import pathlib
import subprocess
import sys


class Product:
    """The running programs by name, each with its output as lines."""

    def __init__(self, binaries, root):
        self.binaries, self.root = pathlib.Path(binaries), pathlib.Path(root)
        self.programs, self.ports = {}, {}

    def write(self, path, value):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(json.dumps(value))

    def start(self, name, *arguments, output=subprocess.PIPE, **environment):
        self.programs[name] = subprocess.Popen(
            [self.binaries / name, *arguments], text=True, stdin=subprocess.PIPE, stdout=output,
            stderr=subprocess.STDOUT, env={"ORLU_ROOT": str(self.root), **environment})
        return self.programs[name]

    @staticmethod
    def wait_for(program, text):
        for line in program.stdout:
            if text in line:
                return line
        sys.exit(f"a program ended before it said {text!r}")

    def start_at_port(self, name, *arguments):
        """Starts a program at a free port; a restart uses the same port."""
        program = self.start(name, "--port", str(self.ports.get(name, 0)), *arguments)
        if name not in self.ports:
            self.ports[name] = int(self.wait_for(program, "port ").split()[1])
        self.wait_for(program, "ready")
        return self.ports[name]

    def bring_up(self, *arguments, devices=None):
        """Starts cloud, blaster, local API and service, and waits until the service has its cloud. The
        arguments are PorticoServer's. Returns the port of the local API."""
        self.write("opt/Orlu/etc/MfgData.json", {"productType": "marlow-tenpenny"})
        self.write("opt/Orlu/etc/DataCollection.json",
                   {"properties": [{"name": "UDC", "pt_endpoint": "/collect"}]})
        os.makedirs(self.root / "mnt/nv/payload")
        os.makedirs(self.root / "mnt/nv/product-persistence")
        cloud = self.start_at_port("UeiCloud")
        self.write("opt/Orlu/etc/UEI/WRLD_linux.conf",
                   {"cloudUrl": f"http://127.0.0.1:{cloud}/qsp/v1"})
        lpm = ["--record", str(self.root / "record"), *(["--devices", devices] if devices else [])]
        self.wait_for(self.start("LpmService", *lpm), "ready")
        port = self.start_at_port("PorticoServer", *arguments)
        service = self.start("TrellanService", ORLU_PORTICO_PORT=str(port))
        self.wait_for(service, "UEI cloud is connected")
        return port

    def kill(self, name):
        self.programs[name].kill()
        self.programs[name].wait()

    def end(self):
        for program in self.programs.values():
            program.kill()
            program.wait()
