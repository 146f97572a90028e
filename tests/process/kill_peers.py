#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Kills and restarts the service's peers under load.

    kill_peers.py BIN [TIMES [SEED]]     where BIN holds the programs

LpmService, PorticoServer, the cloud and the client are each killed and restarted TIMES times in random
order, while keys are pressed, the local API is queried and code sets are looked up. After each round
all peers run, and every key must arrive. The service must not end, and must not need more memory at
the end.
"""
import collections
import http.client
import json
import random
import sys
import tempfile
import threading
import time

from product import Product

CONTROL = "/remote/integration"
SOURCES = ["T2051", "S0456"]
ONE_MORE = ["T0492", "Y0340"]
KEYS_A_CHECK = 10
RECOVERY_SECONDS = 60
PACE_SECONDS = 0.01
KILLS_A_ROUND = 20


class Client:
    """A ProductController that reads lines, and its output."""

    def __init__(self, product):
        self.program = product.start("ProductController", "-")
        self.messages = collections.deque()
        self.came = threading.Condition()
        self.ended = False
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.program.stdout:
            if line.startswith("{"):
                with self.came:
                    self.messages.append(json.loads(line))
                    self.came.notify_all()
        with self.came:
            self.ended = True
            self.came.notify_all()

    def send(self, number, message):
        try:
            self.program.stdin.write(f"{number} {json.dumps(message)}\n")
            self.program.stdin.flush()
        except OSError:
            pass  # it has been killed

    def clear(self):
        with self.came:
            self.messages.clear()

    def ask(self, number, message, seconds=5):
        """The answer, or nothing."""
        self.clear()
        self.send(number, message)
        return self.wait(lambda m: m["id"] == number and m["kind"] == "reply", seconds)

    def wait(self, is_it, seconds):
        with self.came:
            self.came.wait_for(lambda: self.ended or any(map(is_it, self.messages)), seconds)
            return next((m["message"] for m in self.messages if is_it(m)), None)

    def press(self, seconds=5):
        return self.ask(0, {"keyVal": 65, "codeset": SOURCES[0],
                            "keyAction": "KEY_ACTION_SINGLE_PRESS"}, seconds)


class Run:
    def __init__(self, product):
        self.product, self.pressed, self.asked = product, 0, 0
        self.port = product.bring_up()
        self.service = product.programs["TrellanService"]
        self.client = Client(product)
        self.loaded = threading.Event()
        self.over = threading.Event()
        # A program whose output is not read would block at its next line.
        threading.Thread(target=lambda: collections.deque(self.service.stdout, 0),
                         daemon=True).start()
        for load in (self.press_keys, self.ask_api):
            threading.Thread(target=load, daemon=True).start()

    def press_keys(self):
        while not self.over.wait(PACE_SECONDS):
            self.loaded.wait()
            self.client.send(0, {"keyVal": 64 + self.pressed % 10, "codeset": SOURCES[0],
                                 "keyAction": "KEY_ACTION_SINGLE_PRESS"})
            self.pressed += 1

    def ask_api(self):
        entry = {"deviceType": "DEVICE_TYPE_TV", "brand": "Aurora", "model": "AU-55Q7"}
        while not self.over.wait(PACE_SECONDS):
            self.loaded.wait()
            self.request("GET", CONTROL)
            self.request("PUT", CONTROL + "/directEntry", entry)
            self.asked += 2

    def request(self, method, path, body=None):
        """The status, or nothing."""
        connection = http.client.HTTPConnection("localhost", self.port, timeout=10)
        try:
            headers = {"Content-Type": "application/json"} if body else {}
            connection.request(method, path, json.dumps(body) if body else None, headers)
            return connection.getresponse().status
        except (OSError, http.client.HTTPException):
            return None
        finally:
            connection.close()

    def restart(self, name, pause):
        self.product.kill(name)
        self.over.wait(pause)
        if name == "LpmService":
            record = str(self.product.root / "record")
            self.product.wait_for(self.product.start(name, "--record", record), "ready")
        elif name == "ProductController":
            self.client = Client(self.product)
        else:
            self.product.start_at_port(name)

    def emissions(self):
        return (self.product.root / "record").read_text().count('"on": true')

    def recover(self):
        """Waits until the blaster accepts a key."""
        end = time.monotonic() + RECOVERY_SECONDS
        while time.monotonic() < end:
            if self.client.ended:
                self.client = Client(self.product)
            # A restarted LpmService has no code sets. Only a list with a new one makes the service
            # load them.
            ONE_MORE.reverse()
            self.client.clear()
            self.client.send(1, {"ciCode": SOURCES + ONE_MORE[:1]})
            if self.is_synced_and_well():
                return
            # A sync that failed, or was ended by another list, is repeated when the network
            # returns.
            self.client.clear()
            for is_up in (False, True):
                self.request("PUT", "/network/status", {"isPrimaryUp": is_up})
            if self.is_synced_and_well():
                return
        sys.exit(f"no key arrives {RECOVERY_SECONDS} s after all peers are up")

    def is_synced_and_well(self):
        self.client.wait(lambda m: m["id"] == 9 and m["message"].get("syncState"), 3)
        before = self.emissions()
        answer = self.client.press() or {}
        return answer.get("response") == "PASS" and self.emissions() == before + 1

    def check(self):
        self.loaded.clear()
        self.recover()
        end = time.monotonic() + RECOVERY_SECONDS
        while self.request("GET", CONTROL) != 200:
            if time.monotonic() > end:
                sys.exit("all peers are up, and the local API does not answer")
            self.over.wait(PACE_SECONDS)
        before = self.emissions()
        for _ in range(KEYS_A_CHECK):
            self.client.press()
        if (arrived := self.emissions() - before) != KEYS_A_CHECK:
            sys.exit(f"{arrived} of {KEYS_A_CHECK} keys arrived")
        if self.service.poll() is not None:
            sys.exit(f"the service has ended with {self.service.returncode}")

    def memory(self):
        """The service's private memory in KiB; shared memory depends on the other processes."""
        with open(f"/proc/{self.service.pid}/smaps_rollup", encoding="ascii") as rollup:
            return next(int(line.split()[1]) for line in rollup if line.startswith("Private_Dirty:"))


def main():
    times = int(sys.argv[2]) if len(sys.argv) > 2 else 2
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    draw = random.Random(seed)
    names = ["LpmService", "PorticoServer", "UeiCloud", "ProductController"]
    kills = names * times
    draw.shuffle(kills)
    with tempfile.TemporaryDirectory() as root:
        product = Product(sys.argv[1], root)
        try:
            run = Run(product)
            for name in names:  # the first restart of each may allocate memory that stays
                run.restart(name, 0)
            run.check()
            before = run.memory()
            for done, name in enumerate(kills, 1):
                run.loaded.set()
                run.restart(name, draw.random() / 2)
                if done % KILLS_A_ROUND == 0 or done == len(kills):
                    run.check()
                    print(f"{done} kills, {run.memory()} KiB", flush=True)
            after = run.memory()
        finally:
            product.end()
    print(f"seed {seed}: each peer killed {times} times, {run.pressed} keys and {run.asked} requests "
          f"meanwhile; {before} KiB before, {after} KiB after")
    sys.exit(0 if after <= before * 1.05 or times < 10 else "the service's memory has grown")


main()
