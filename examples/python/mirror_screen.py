#!/usr/bin/env python3
"""A host in Python: lists the displays, mirrors the first one onto a light device for some seconds,
and shows the data sent and the colours on the screen.

    mirror_screen.py ADDRESS [SECONDS]

The library is found on the system's search path, or by its path in the environment variable
SCREEN_MIRROR_LIBRARY.
"""
import ctypes
import json
import os
import select
import signal
import socket
import sys
from ctypes import c_char_p, c_int
from pathlib import Path


class MirrorError(Exception):
    """Has an error message of one line."""


def load_library():
    name = "libscreenMirrorMac." + ("dylib" if sys.platform == "darwin" else "so.1")
    try:
        library = ctypes.CDLL(os.environ.get("SCREEN_MIRROR_LIBRARY", name))
    except OSError as error:
        raise MirrorError(f"the library cannot be loaded: {error}") from error
    library.getDisplays.argtypes = [c_char_p, c_int]
    for function in (library.getPalette, library.getStreamFrameJson, library.setMirrorConfig):
        function.argtypes = [c_char_p]
    return library


class SignalHandlerGuard:
    """Saves the process's signal handlers on entry and restores them on exit.

    startMirror() replaces them with the library's, which end the process. The module `signal` only
    knows handlers that were set with it, so this calls the C library's sigaction(), whose structure
    fits into 256 bytes on every system.
    """

    replaced = (signal.SIGINT, signal.SIGABRT, signal.SIGTERM, signal.SIGBUS, signal.SIGFPE,
                signal.SIGPIPE, signal.SIGSEGV)
    sigaction = ctypes.CDLL(None).sigaction

    def __enter__(self):
        self.saved = {number: ctypes.create_string_buffer(256) for number in self.replaced}
        for number, action in self.saved.items():
            self.sigaction(number, None, action)

    def __exit__(self, kind, error, trace):
        for number, action in self.saved.items():
            self.sigaction(number, action, None)


class ScreenMirror:
    """Mirrors during its `with` block. A process can have one run at a time."""

    def __init__(self, library):
        self.library = library

    # A buffer's `value` ends at the first zero, or at the end of the buffer if the text fills it.
    def displays(self):
        buffer = ctypes.create_string_buffer(4096)
        if self.library.getDisplays(buffer, len(buffer)) != 1:
            raise MirrorError("the displays cannot be listed")
        if len(buffer.value) == len(buffer):
            raise MirrorError("the list of displays is cut")
        return json.loads(buffer.value)["displays"]

    def palette(self):
        buffer = ctypes.create_string_buffer(512)
        if self.library.getPalette(buffer) != 0:
            raise MirrorError("the palette could not be made")
        if len(buffer.value) == len(buffer):
            raise MirrorError("the palette is cut")
        return json.loads(buffer.value)["palette"]

    def sent(self):
        if self.library.captureCurrentStreamFrames() != 0:
            raise MirrorError("nothing was sent within a second")
        size = self.library.getSizeOfStreamFrameJson()
        if size < 0:
            raise MirrorError("the snapshot could not be made")
        if size == 0:
            raise MirrorError("no frame was captured")
        buffer = ctypes.create_string_buffer(size)
        if self.library.getStreamFrameJson(buffer) != 0:
            raise MirrorError("the snapshot could not be fetched")
        return json.loads(buffer.value)["devices"]

    def configure(self, document):
        if self.library.setMirrorConfig(json.dumps(document).encode()) != 1:
            raise MirrorError("the configuration was not applied: the screen cannot be captured")

    def __enter__(self):
        with SignalHandlerGuard():
            started = self.library.startMirror()
        if started == 0:
            raise MirrorError(
                "mirroring was not started: a run exists already or there is no device")
        if started != 1:
            raise MirrorError("mirroring was not started: no thread could be made")
        return self

    def __exit__(self, kind, error, trace):
        if self.library.stopMirror() != 1 and error is None:
            raise MirrorError("mirroring could not be stopped")


def is_address(text):
    """The library accepts only numeric addresses and does not report others."""
    for family in (socket.AF_INET, socket.AF_INET6):
        try:
            socket.inet_pton(family, text)
            return True
        except (OSError, ValueError):
            pass
    return False


def configuration(display, address):
    """Four panels in a row across the middle of the display."""
    panels = [
        {"panelID": i + 1, "centroidX": (2 * i + 1) * display["width"] // 8,
         "centroidY": display["height"] // 2}
        for i in range(4)
    ]
    device = {"ip": address, "controlVersion": 2, "shapeType": 0, "scaleFactor": 1.0,
              "panels": panels}
    # Integers in the document are signed: pass the identifier's 32 bits as a signed integer.
    identifier = ctypes.c_int32(display["displayID"]).value
    return {"displayID": identifier, "mode": 0, "devices": [device]}


def wait(seconds):
    """Ends at once on a signal. time.sleep() would miss one that comes just before it."""
    reader, writer = socket.socketpair()
    with reader, writer:
        writer.setblocking(False)
        before = signal.set_wakeup_fd(writer.fileno())
        try:
            select.select([reader], [], [], seconds)
        finally:
            signal.set_wakeup_fd(before)


def swatch(colour):
    red, green, blue = colour["R"], colour["G"], colour["B"]
    block = f"\033[48;2;{red};{green};{blue}m  \033[0m " if sys.stdout.isatty() else ""
    return f"{block}#{red:02x}{green:02x}{blue:02x}"


def main(address, seconds=10):
    if not is_address(address):
        raise MirrorError(f"not an IPv4 or IPv6 address: {address}")
    mirror = ScreenMirror(load_library())
    displays = mirror.displays()
    for display in displays:
        print(f"display {display['displayID']}: {display['width']} x {display['height']}")
    if not displays:
        raise MirrorError("there is no display to mirror; on Linux, DISPLAY names an X server")

    mirror.configure(configuration(displays[0], address))
    with mirror:
        print(f"mirroring display {displays[0]['displayID']} onto {address}", flush=True)
        wait(float(seconds))
        for device in mirror.sent():
            print(f"sent to {device['ip']}: {device['animData']}")
        print("palette:", *map(swatch, mirror.palette()), flush=True)


if __name__ == "__main__":
    program = Path(sys.argv[0]).name
    if len(sys.argv) not in (2, 3):
        sys.exit(f"usage: {program} ADDRESS [SECONDS]")
    try:
        main(*sys.argv[1:])
    except MirrorError as problem:
        sys.exit(f"{program}: {problem}")
    except KeyboardInterrupt:
        sys.exit(f"{program}: interrupted")
    except OSError:
        # Discard the buffered output, since writing it at exit would fail again.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        sys.exit(f"{program}: standard output cannot be written")
