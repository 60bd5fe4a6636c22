#!/usr/bin/env python3
"""Reads what was built for macOS: check_bundle.py program BUNDLE, or check_bundle.py icon DRAWING TOOL."""
import plistlib
import subprocess
import sys
from pathlib import Path
from struct import unpack_from

LOAD_DYLIB, CODE_SIGNATURE, BUILD_VERSION = 0xC, 0x1D, 0x32


def check_program(bundle):
    info = plistlib.loads(Path(bundle, "Contents/Info.plist").read_bytes())
    assert info["LSUIElement"] is True and info["NSPrincipalClass"] == "NSApplication", info
    program = Path(bundle, "Contents/MacOS", info["CFBundleExecutable"]).read_bytes()
    magic, cpu, _, kind, count = unpack_from("<5I", program)
    assert (magic, cpu, kind) == (0xFEEDFACF, 0x0100000C, 2), "no program for arm64"
    offset, commands, libraries = 32, {}, []
    for _ in range(count):
        command, size = unpack_from("<2I", program, offset)
        commands[command] = content = program[offset:offset + size]
        if command == LOAD_DYLIB:
            libraries.append(content[unpack_from("<I", content, 8)[0]:].split(b"\0")[0].decode())
        offset += size
    platform, minimum = unpack_from("<2I", commands[BUILD_VERSION], 8)
    assert (platform, f"{minimum >> 16}.{minimum >> 8 & 255}") == (1, info["LSMinimumSystemVersion"]), minimum
    public = ("/System/Library/Frameworks/", "/usr/lib/libobjc.A.dylib", "/usr/lib/libSystem.B.dylib")
    assert CODE_SIGNATURE in commands and len(libraries) > 5, commands.keys()
    assert all(name.startswith(public) for name in libraries), libraries


def check_icon(drawing, tool):
    subprocess.run([tool, drawing, "made.icns"], check=True)
    assert subprocess.run([tool, "/nowhere.svg", "none.icns"], capture_output=True).returncode == 1
    icon = Path("made.icns").read_bytes()
    assert icon[:8] == b"icns" + len(icon).to_bytes(4, "big")
    sizes, offset = {}, 8
    while offset < len(icon):
        name, length = unpack_from(">4sI", icon, offset)
        picture = icon[offset + 8:offset + length]
        assert picture[:8] == b"\x89PNG\r\n\x1a\n" and len(set(picture)) > 64, name
        sizes[name.decode()] = unpack_from(">2I", picture, 16)
        offset += length
    square = {"icp4": 16, "icp5": 32, "ic07": 128, "ic08": 256, "ic09": 512, "ic10": 1024,
              "ic11": 32, "ic12": 64, "ic13": 256, "ic14": 512}
    assert sizes == {name: (edge, edge) for name, edge in square.items()}, sizes


{"program": check_program, "icon": check_icon}[sys.argv[1]](*sys.argv[2:])
