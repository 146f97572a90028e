# SPDX-License-Identifier: Apache-2.0
"""Reads recorded signals: marks and spaces in turn, in microseconds, a mark first."""

LEAST_US = 50  # two periods of the carrier
LONGEST_US = 65535  # of a raw duration
PAUSE_US = 15000  # a space of this length ends a frame
LAST_SPACE_US = 40000  # behind a raw frame without a recorded repeat


def near(time, wanted):
    return abs(time - wanted) <= wanted * 0.3


def pulse_distance(times):
    """32 bits as four bytes; the space behind a mark is 0 or 1. None for any other signal."""
    value = 0
    for i in range(32):
        mark, space = times[2 + 2 * i:4 + 2 * i]
        if not near(mark, 562) or not (near(space, 562) or near(space, 1687)):
            return None
        value |= near(space, 1687) << i
    return value.to_bytes(4, "little") if near(times[66], 562) else None


def raw_nec(times):
    if len(times) < 67 or not near(times[1], 4500):
        return None
    data = pulse_distance(times)
    if data is None:
        return None
    address, high, command, check = data
    if near(times[0], 4500):
        fits = address == high and check == command ^ 0xFF
        return ("samsung", address << 16 | address << 8 | command) if fits else None
    if not near(times[0], 9000):
        return None
    if check != command ^ 0xFF:
        return "nec32", high << 24 | address << 16 | check << 8 | command
    if high != address ^ 0xFF:
        return "necx", address << 16 | high << 8 | command
    return "nec", address << 8 | command


def raw_sony(times):
    """Bits that differ by the length of their mark."""
    if len(times) < 2 or not near(times[0], 2400) or not near(times[1], 600):
        return None
    bits = []
    for mark, space in zip(times[2::2], times[3::2] + [10000]):
        if not near(mark, 600) and not near(mark, 1200):
            return None
        bits.append(near(mark, 1200))
        if not near(space, 600):
            break
    value = sum(bit << i for i, bit in enumerate(bits))
    command, address = value & 0x7F, value >> 7
    if len(bits) == 12:
        return "sony12", address << 16 | command
    if len(bits) == 15:
        return "sony15", address << 16 | command
    if len(bits) == 20:
        return "sony20", (address & 0x1F) << 16 | (address >> 5) << 8 | command
    return None


def raw_rc5(times):
    """A bit is a space and a mark, or a mark and a space, of 889 us each. The first space is not recorded."""
    halves = [0]
    for i, time in enumerate(times):
        count = round(time / 889)
        if i % 2 == 1 and count > 2:
            break
        if count not in (1, 2) or not near(time, count * 889):
            return None
        halves += [1 - i % 2] * count
    halves += [0] * (len(halves) % 2)
    bits = list(zip(halves[::2], halves[1::2]))
    if len(bits) != 14 or any(first == second for first, second in bits) or bits[0] != (0, 1):
        return None
    value = sum(second << 13 - i for i, (first, second) in enumerate(bits))
    high = 0 if value & 0x1000 else 0x40
    return "rc5", (value >> 6 & 0x1F) << 8 | high | value & 0x3F


def raw_scancode(fields):
    """Protocol and scancode of raw timings; None for an unknown protocol."""
    times = [int(time) for time in fields["data"].split()]
    carrier = int(fields["frequency"])
    return (raw_nec(times) or raw_sony(times) or raw_rc5(times)) if 35000 <= carrier <= 41000 else None


def raw_frame(fields):
    """Carrier in kHz and the frame that raw timings repeat, or a text with the reason for a refusal."""
    times = [int(time) for time in fields["data"].split()]
    carrier = round(int(fields["frequency"]) / 1000)
    if not 20 <= carrier <= 60 or min(times, default=0) < LEAST_US or max(times[::2]) > PAUSE_US:
        return "raw timings that no light has"
    ends = [i + 1 for i in range(1, len(times), 2) if times[i] > PAUSE_US]
    frames = [times[start:end] for start, end in zip([0, *ends], [*ends, len(times)]) if start < end]
    first = frames[0] if ends else times[:len(times) - 1 + len(times) % 2] + [LAST_SPACE_US]
    length = len(first) - 1  # without the last space, which may differ
    for frame in frames[1:]:
        if len(frame) < length or len(frame) > length + 1 or not all(map(near, frame[:length], first)):
            return "raw timings of several frames, not all alike"
    if max(first) > LONGEST_US:
        return f"raw timings with more than {LONGEST_US} us of dark"
    return (carrier, first) if 6 <= len(first) <= 254 else "raw timings of too few or many steps"
