#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs scripts/build-catalogue on keymaps and a folder of .ir files made here, with raw timings that
LpmService renders, and checks the catalogue.

catalogue_script_test.py ROOT BIN_DIR"""

import importlib.machinery
import importlib.util
import pathlib
import sqlite3
import subprocess
import sys
import tempfile

ROOT, BIN = (pathlib.Path(argument) for argument in sys.argv[1:3])
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
LOADER = importlib.machinery.SourceFileLoader("catalogue", str(ROOT / "scripts/build-catalogue"))
SCRIPT = importlib.util.module_from_spec(importlib.util.spec_from_loader("catalogue", LOADER))
LOADER.exec_module(SCRIPT)

# The keys of each protocol: name in the file, scancode, and the form of a parsed file.
PROTOCOLS = {
    "nec": ("NEC", lambda key: 0x0400 | key, "04 00 00 00"),
    "necx": ("NECext", lambda key: 0xC14400 | key, "C1 44 00 00"),
    "samsung": ("Samsung32", lambda key: 0x070700 | key, "07 00 00 00"),
    "rc5": ("RC5", lambda key: 0x0500 | key, "05 00 00 00"),
    "sony12": ("SIRC", lambda key: 0x010000 | key, "01 00 00 00"),
    "sony15": ("SIRC15", lambda key: 0xA40000 | key, "A4 00 00 00"),
    "sony20": ("SIRC20", lambda key: 0x015A00 | key, "41 0B 00 00"),
}
KEYS = {"Power": 0x15, "Vol_up": 0x12, "Vol_dn": 0x13, "Ch_next": 0x20, "Ch_prev": 0x21, "Mute": 0x0D}


def parsed(name, protocol, address, key):
    check = f"{key ^ 0xFF:02X}" if protocol == "NECext" else "00"
    return (f"#\nname: {name}\ntype: parsed\nprotocol: {protocol}\naddress: {address}\n"
            f"command: {key:02X} {check} 00 00\n")


def raw(name, protocol, scancode):
    lines = subprocess.run([BIN / "LpmService", "--render", f"{protocol}:0x{scancode:x}"], check=True,
                           capture_output=True, text=True).stdout.split("\n")
    words = [line.split() for line in lines if line]
    carrier = next(word[1] for word in words if word[0] == "carrier")
    data = " ".join(word[1] for word in words if word[0] != "carrier")
    return f"#\nname: {name}\ntype: raw\nfrequency: {carrier}\nduty_cycle: 0.33\ndata: {data}\n"


def write(folder, path, text):
    file = folder / path
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_bytes(text if isinstance(text, bytes) else text.encode())


KEYMAPS = {
    "minix_neo": """[[protocols]]
protocol = "nec"
[protocols.scancodes]
0x0400 = "KEY_POWER"
0x0401 = "KEY_MUTE"
0x10000 = "KEY_MENU"
zz = "KEY_HOME"
1027 = "KEY_UP"
[[protocols]]
protocol = "unknown"
""",
    "tivo": "[[protocols", "other": "",
}


# The expected result for the power key of each remote with which LIRC checks the encoder.
LIRCD_POWER = {"nec": 0x0408, "necx": 0x835590, "nec32": 0xA10C900F, "samsung": 0x070702,
               "rc5": 0x1E3D, "rc6_0": 0x000C, "rc6_mce": 0x800F040C, "sony12": 0x010015,
               "sony15": 0x970015, "sony20": 0x1AE215}
BAD_LIRCD = b"""end codes
begin remote
  name odd
  flags RC5|REVERSE
end remote
begin remote
  name raw
  flags RAW_CODES
  gap 40000
  begin raw_codes
    name KEY_POWER
      500 900 500 3000 500
    name KEY_MUTE
      500 900 500 4000 500
    name KEY_UP
      500 900 900 3000 500
    name KEY_DOWN
      500 x
"""


def check_lircd(keys):
    """The protocols under LIRC's names, which differ from ours."""
    for protocol, power in LIRCD_POWER.items():
        text = (ROOT / f"tests/lpm/infrared/lirc/{protocol}.lircd.conf").read_text(encoding="utf-8")
        (remote,) = SCRIPT.read_lircd(text)
        turned = SCRIPT.import_lircd_remote(*remote, keys, SCRIPT.Report())
        assert turned.groups[protocol]["POWER"] == f"0x{power:x}", f"{protocol}: {turned.groups}"


def lay_out(folder):
    for protocol, (name, scancode, address) in PROTOCOLS.items():
        write(folder, f"TVs/{protocol}/{protocol}_parsed.ir",
              "".join(parsed(key, name, address, code) for key, code in KEYS.items()))
        write(folder, f"TVs/{protocol}/{protocol}_raw.ir",
              "".join(raw(key, protocol, scancode(code)) for key, code in KEYS.items()))
    write(folder, "TVs/Bad/Bad_1.ir", b"\xff\xfe\0\nname: Power\ntype: raw\nfrequency: x\ndata: 1 2\n"
          b"name: Mute\ntype: parsed\nprotocol: NEC\naddress: zz\ncommand: 1\n"
          b"name: Vol_up\ntype: raw\nfrequency: 38000\ndata: 1 2 3\n"
          b"name: Vol_dn\ntype: parsed\nprotocol: Other\naddress: 1\ncommand: 1\n")
    write(folder.parent, "lircd/TVs/Acme/lircd.conf", BAD_LIRCD)
    for name, text in KEYMAPS.items():
        write(folder.parent, f"keymaps/{name}.toml", text)
    write(folder, "Lamps/Acme/Acme_1.ir", "name: Power\n")


def build(folder, out):
    return subprocess.run([ROOT / "scripts/build-catalogue", "--builder", BIN / "CatalogueBuilder",
                           "--keymaps", folder.parent / "keymaps", "--irdb", folder, "--lircd",
                           folder.parent / "lircd", out], check=True, capture_output=True, text=True).stdout


def main():
    check_lircd(SCRIPT.read_keys())
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name) / "irdb"
        lay_out(folder)
        first, second = pathlib.Path(name) / "1.sqlite", pathlib.Path(name) / "2.sqlite"
        said = build(folder, first)
        assert build(folder, second) == said
        assert first.read_bytes() == second.read_bytes(), "the same sources gave another file"
        for line in ("minix_neo.toml: protocol unknown",
                     "1 keys: the scancode is no number", "1 keys: the scancode does not fit nec",
                     "other.toml: it is of a computer's receiver or tuner", "odd: flags REVERSE",
                     "1 keys: lircd.conf: no number",
                     "Lamps/Acme/Acme_1.ir: its folder is of no device type of ours",
                     "TVs/Bad/Bad_1.ir: it has 0 keys that can be used", "1 keys: no timings",
                     "1 keys: no address or command", "1 keys: protocol Other",
                     "1 keys: raw timings that no light has"):
            assert f"  {line}\n" in said, f"{line!r} is not in\n{said}"
        models = sqlite3.connect(first).execute(
            "SELECT brand.name, count(*), count(DISTINCT codeset) FROM brand JOIN model ON brand = "
            "brand.id JOIN model_codeset ON model_codeset.model = model.id GROUP BY brand.id")
        assert "tivo.toml: it can't be read: " in said and "  keys turned: nec 3\n" in said
        assert "lircd: 1 remotes turned, 1 left out\n  keys turned: raw 3\n" in said
        found = {brand: counts for brand, *counts in models}
        for protocol in PROTOCOLS:
            assert found.get(protocol) == [2, 1], \
                f"{protocol}: read raw it is another code set than parsed: {found.get(protocol)}"


main()
