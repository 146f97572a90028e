# SPDX-License-Identifier: Apache-2.0
"""Reads lircd.conf files: the signal of each code of a remote."""

from catalogue.signal import near, raw_frame, raw_nec, raw_rc5, raw_sony


def read_lircd(text):
    """The remotes of a lircd.conf, each with its fields as lists of words, its codes and its raw codes."""
    remotes, fields, codes, raw, part = [], {}, [], [], ""
    for words in (line.partition("#")[0].split() for line in text.splitlines()):
        if words[:1] == ["begin"]:
            part = words[-1]
            if part == "remote":
                fields, codes, raw = {}, [], []
                remotes.append((fields, codes, raw))
        elif words[:1] == ["end"]:
            part = "remote" if words[-1] in ("codes", "raw_codes") else ""
        elif words and part == "remote":
            fields[words[0]] = words[1:]
        elif words and part == "codes":
            codes.append((words[0], words[1:]))
        elif words and part == "raw_codes":
            if words[0] == "name" and len(words) > 1:
                raw.append((words[1], []))
            elif raw:
                raw[-1][1].extend(words)
    return remotes


class LircdRemote:
    """Encodes the codes of one remote of a lircd.conf. Raises ValueError with the reason."""

    KNOWN_FLAGS = {"RC5", "RC6", "SPACE_ENC", "CONST_LENGTH", "RAW_CODES", "NO_HEAD_REP"}

    def __init__(self, fields):
        self.fields = fields
        self.flags = set("".join(fields.get("flags", [])).split("|")) - {""}
        if not self.flags:
            raise ValueError("its codes are numbers of a receiver")
        if self.flags - self.KNOWN_FLAGS:
            raise ValueError(f"flags {'|'.join(sorted(self.flags - self.KNOWN_FLAGS))}")
        self.carrier = self.number("frequency", 38000)

    def number(self, name, other=0):
        return int((self.fields.get(name) or [str(other)])[0], 0)

    def pair(self, name):
        words = self.fields.get(name, [])
        return [int(word, 0) for word in words[:2]] if len(words) >= 2 else []

    def bits(self, code):
        bits = []
        for data, count in ((self.number("pre_data"), self.number("pre_data_bits")),
                            (code, self.number("bits")),
                            (self.number("post_data"), self.number("post_data_bits"))):
            if not 0 <= count <= 64:
                raise ValueError("more bits than a code has")
            bits += [data >> i & 1 for i in reversed(range(count))]
        return bits

    def scancode(self, code):
        """Protocol and scancode, or else the durations of one frame without its last space."""
        bits = self.bits(code)
        value = int("".join(map(str, bits)) or "0", 2)
        if "RC6" in self.flags:
            return self.rc6(~value & (1 << len(bits)) - 1, len(bits))
        if "RC5" in self.flags:
            return self.rc5(value, len(bits) + ("plead" in self.fields))
        if "SPACE_ENC" not in self.flags:
            raise ValueError("no SPACE_ENC, RC5 or RC6")
        if self.fields.keys() & {"pre", "post", "foot", "three", "two"}:
            raise ValueError("pre, post, foot or more than two kinds of bits")
        one, zero = self.pair("one"), self.pair("zero")
        if not one or not zero:
            raise ValueError("no timings of its bits")
        times = self.pair("header")
        for bit in bits:
            times += one if bit else zero
        return times + [self.number("ptrail")] if self.number("ptrail") else times[:-1]

    def rc5(self, value, count):
        if count != 14 or not near(self.pair("one")[0] if self.pair("one") else 0, 889):
            raise ValueError(f"RC5 of {count} bits or of other timings")
        return "rc5", (value >> 6 & 0x1F) << 8 | (0 if value & 0x1000 else 0x40) | value & 0x3F

    def rc6(self, value, count):
        header = self.pair("header")
        if not header or not near(header[0], 2664) or not near(header[1], 888):
            raise ValueError("RC6 of other timings")
        if count == 21 and value >> 17 == 0b1000:
            return "rc6_0", value & 0xFFFF
        if count == 37 and value >> 32 == 0b11100:
            return "rc6_mce", value & 0xFFFF7FFF
        raise ValueError(f"RC6 of {count} bits or of another mode")

    def stored(self, times):
        """The raw frame of a signal of no known protocol, with LIRC's gap as its last space."""
        if self.fields.keys() & {"repeat", "toggle_bit_mask"} or self.number("toggle_bit") or \
                self.number("min_repeat") or "NO_HEAD_REP" in self.flags:
            raise ValueError("a repeat or toggle that a raw group has not")
        gap = self.number("gap") - ("CONST_LENGTH" in self.flags) * sum(times)
        frame = raw_frame({"data": " ".join(map(str, [*times, gap])), "frequency": self.carrier})
        if isinstance(frame, str):
            raise ValueError(frame)
        return frame

    def add(self, remote, key, times):
        code = times if isinstance(times, tuple) else \
            35000 <= self.carrier <= 41000 and (raw_nec(times) or raw_sony(times) or raw_rc5(times))
        if code:
            remote.add(key, *code)
        else:
            remote.add_raw(key, *self.stored(times))


def lircd_reason(error):
    """The reason of a ValueError, with one text for all numbers that can't be read."""
    return "no number" if "invalid literal" in str(error) else str(error)
