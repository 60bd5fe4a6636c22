#!/usr/bin/env python3
"""Reads what was built for macOS: check_bundle.py program BUNDLE, or check_bundle.py icon DRAWING TOOL."""
import os
import plistlib
import struct
import subprocess
import sys
import tempfile

LOAD_DYLIB, CODE_SIGNATURE, BUILD_VERSION = 0xC, 0x1D, 0x32
ARM64, EXECUTE, MACOS = 0x0100000C, 2, 1


def check_program(bundle):
    with open(f"{bundle}/Contents/Info.plist", "rb") as file:
        info = plistlib.load(file)
    assert info["LSUIElement"] is True and info["NSPrincipalClass"] == "NSApplication", info
    with open(f"{bundle}/Contents/MacOS/{info['CFBundleExecutable']}", "rb") as file:
        program = file.read()
    magic, cpu, _, kind, count = struct.unpack_from("<5I", program)
    assert (magic, cpu, kind) == (0xFEEDFACF, ARM64, EXECUTE), (hex(magic), hex(cpu), kind)
    offset, libraries, seen = 32, [], set()
    for _ in range(count):
        command, size = struct.unpack_from("<2I", program, offset)
        seen.add(command)
        if command == LOAD_DYLIB:
            start = offset + struct.unpack_from("<I", program, offset + 8)[0]
            libraries.append(program[start:program.index(b"\0", start)].decode())
        if command == BUILD_VERSION:
            platform, minimum = struct.unpack_from("<2I", program, offset + 8)
            shown = f"{minimum >> 16}.{minimum >> 8 & 255}"
            assert (platform, shown) == (MACOS, info["LSMinimumSystemVersion"]), (platform, shown)
        offset += size
    assert {CODE_SIGNATURE, BUILD_VERSION} <= seen, seen
    public = ("/System/Library/Frameworks/", "/usr/lib/libobjc.A.dylib", "/usr/lib/libSystem.B.dylib")
    assert len(libraries) > 5 and all(name.startswith(public) for name in libraries), libraries


def check_icon(drawing, tool):
    with tempfile.TemporaryDirectory() as folder:
        made = os.path.join(folder, "Orvo.icns")
        subprocess.run([tool, drawing, made], check=True)
        assert subprocess.run([tool, "/nowhere.svg", made + "2"], capture_output=True).returncode == 1
        with open(made, "rb") as file:
            icon = file.read()
    assert icon[:4] == b"icns" and struct.unpack(">I", icon[4:8])[0] == len(icon)
    sizes, offset = {}, 8
    while offset < len(icon):
        name, length = struct.unpack_from(">4sI", icon, offset)
        picture = icon[offset + 8:offset + length]
        assert picture[:8] == b"\x89PNG\r\n\x1a\n" and len(set(picture)) > 64, name
        sizes[name.decode()] = struct.unpack_from(">2I", picture, 16)
        offset += length
    square = {"icp4": 16, "icp5": 32, "ic07": 128, "ic08": 256, "ic09": 512, "ic10": 1024,
              "ic11": 32, "ic12": 64, "ic13": 256, "ic14": 512}
    assert sizes == {name: (edge, edge) for name, edge in square.items()}, sizes


{"program": check_program, "icon": check_icon}[sys.argv[1]](*sys.argv[2:])
