"""Reading a log of 0x0C messages (.zlog; the byte layout is in
tools/zlog/README.md): a file header, then one record per message,
A5 5A, flags, 0, u16 length L, L message bytes, all little-endian.

A damaged record (bad sync, a length under 3, or a length that differs
from the message's own) is reported and skipped: the reader scans on for
the next offset where a good record starts. A record cut off by the end
of the file is reported and not returned.
"""
import struct
from collections import namedtuple

LogHeader = namedtuple("LogHeader", "version position station sources length")


class Message(namedtuple("Message", "offset flags data")):
    """One record: its offset in the file, its flags and the message
    bytes."""

    @property
    def interpolated(self):
        """A second the converter filled in between recorded epochs."""
        return bool(self.flags & 1)


def _string(buf, at):
    (n,) = struct.unpack_from("<H", buf, at)
    return buf[at + 2:at + 2 + n].decode("utf-8", "replace"), at + 2 + n


def _header(buf, path):
    if len(buf) < 38 or buf[:4] != b"ZLOG":
        raise ValueError(f"{path}: not a log (no ZLOG header)")
    version, flags, length = struct.unpack_from("<HHI", buf, 4)
    if version != 1:
        raise ValueError(f"{path}: log version {version} is not known")
    pos = struct.unpack_from("<3d", buf, 12)
    station, at = _string(buf, 36)
    (count,) = struct.unpack_from("<H", buf, at)
    at += 2
    sources = []
    for _ in range(count):
        name, at = _string(buf, at)
        sources.append(name)
    return LogHeader(version, pos if flags & 1 else None, station, sources, length)


def read_header(path):
    """The log's header: version, approximate position (X, Y, Z in m, or
    None), station, source file names, header length."""
    with open(path, "rb") as f:
        return _header(f.read(1 << 16), path)


def _good_at(buf, at):
    """Whether a whole, consistent record starts at `at`."""
    if at + 6 > len(buf) or buf[at] != 0xA5 or buf[at + 1] != 0x5A:
        return False
    (n,) = struct.unpack_from("<H", buf, at + 4)
    return n >= 3 and at + 6 + n <= len(buf) and struct.unpack_from("<H", buf, at + 7)[0] == n


def read_log(path, problems=None):
    """Yields the log's good records as Message(offset, flags, data).
    Damaged or cut-off records are skipped; when `problems` is a list,
    "PATH@OFFSET: what is wrong" is appended to it for each."""
    with open(path, "rb") as f:
        buf = f.read()
    at = _header(buf, path).length

    def report(offset, what):
        if problems is not None:
            problems.append(f"{path}@{offset}: {what}")

    def resync(start):
        nxt = start
        while nxt + 6 <= len(buf) and not _good_at(buf, nxt):
            nxt += 1
        if nxt + 6 > len(buf):
            report(start, "no good record after this point")
            return len(buf)
        report(start, f"skipped {nxt - start} bytes to the next good record")
        return nxt

    while at < len(buf):
        if at + 6 > len(buf):
            report(at, "record header cut off by the end of the file")
            return
        if buf[at] != 0xA5 or buf[at + 1] != 0x5A:
            report(at, "bad sync bytes")
            at = resync(at + 1)
            continue
        flags = buf[at + 2]
        (n,) = struct.unpack_from("<H", buf, at + 4)
        if n < 3:
            report(at, f"record length {n} is too short for a message")
            at = resync(at + 1)
            continue
        if at + 6 + n > len(buf):
            report(at, "record cut off by the end of the file")
            return
        if struct.unpack_from("<H", buf, at + 7)[0] != n:
            # The framing is kept when the next record follows it; the
            # message itself cannot be trusted.
            report(at, "record length disagrees with the message length; record skipped")
            nxt = at + 6 + n
            at = nxt if nxt >= len(buf) or _good_at(buf, nxt) else resync(at + 1)
            continue
        yield Message(at, flags, bytes(buf[at + 6:at + 6 + n]))
        at += 6 + n
