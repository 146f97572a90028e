#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""A thousand connections at each listener of the product.

    crowd_listeners.py BIN     where BIN holds the programs

Each listener in turn gets connections that send nothing, half a message or garbage. Clients that were
connected before are served meanwhile, except the service's client: a new client replaces it. After
the connections are closed, the listener accepts clients as before, and no descriptor remains open.
"""
import http.client
import json
import os
import socket
import subprocess
import sys
import tempfile

from product import Product

CROWD = 1000
SAYINGS = (b"", b"\x00\x00\x10\x00half", b"GET / HTTP/1.1\r\nHost:", b"\xff" * 64)
KEY = '0 {"keyVal": 65, "codeset": "", "keyAction": "KEY_ACTION_CONTINUOUS_PRESS"}\n'


class Listeners:
    def __init__(self, product):
        self.product = product
        self.port = product.bring_up()
        self.consumer = http.client.HTTPConnection("localhost", self.port, timeout=30)
        run = product.root / "run/orlu"
        self.listeners = {str(path): (socket.AF_UNIX, str(path)) for path in sorted(run.iterdir())
                      if path.suffix == ".sock"}
        for name, port in product.ports.items():
            self.listeners[name] = (socket.AF_INET, ("127.0.0.1", port))

    def crowd(self, family, address):
        members = []
        for i in range(CROWD):
            member = socket.socket(family, socket.SOCK_STREAM)
            member.settimeout(5)
            try:
                member.connect(address)
                member.send(SAYINGS[i % len(SAYINGS)])
            except OSError:
                pass  # turned away
            members.append(member)
        return members

    def is_consumer_served(self):
        self.consumer.request("GET", "/remote/integration")
        return json.loads(self.consumer.getresponse().read()).get("sessionActive") is False

    def output(self, name, *arguments, text=None):
        return subprocess.run([self.product.binaries / name, *arguments], input=text, text=True,
                              capture_output=True, timeout=30, check=False,
                              env={"ORLU_ROOT": str(self.product.root)}).stdout

    def is_key_sent(self):
        return '"response":"PASS"' in self.output("ProductController", "-", text=KEY)

    def is_engineer_served(self):
        return "version" in self.output("OrluConsole", "trs", "whitelist_ver")

    def descriptors(self):
        return {name: len(os.listdir(f"/proc/{program.pid}/fd"))
                for name, program in self.product.programs.items()}

    def are_descriptors_back(self, before):
        """Whether all ends were handled: the event loops see them between two requests."""
        return any(self.descriptors() == before or not self.is_consumer_served()
                   for _ in range(500))

    def check(self):
        faults = []
        self.is_consumer_served()
        before = self.descriptors()
        for name, (family, address) in self.listeners.items():
            members = self.crowd(family, address)
            if not self.is_consumer_served():
                faults.append(f"a crowd at {name}: the consumer is not served")
            for member in members:
                member.close()
            if not self.are_descriptors_back(before):
                faults.append(f"a crowd at {name} has left: {self.descriptors()}, not {before}")
            if not self.is_key_sent():
                faults.append(f"a crowd at {name} has gone: no key is sent")
            if not self.is_engineer_served():
                faults.append(f"a crowd at {name} has gone: no console is served")
        faults += [f"{name} has ended" for name, program in self.product.programs.items()
                   if program.poll() is not None]
        return faults


def main():
    with tempfile.TemporaryDirectory() as root:
        product = Product(sys.argv[1], root)
        try:
            listeners = Listeners(product)
            faults = listeners.check()
        finally:
            product.end()
    print("\n".join(faults) or f"{len(listeners.listeners)} listeners have stood {CROWD} visitors each")
    sys.exit(1 if faults else 0)


main()
