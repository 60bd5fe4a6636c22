#!/usr/bin/env python3
"""Reads the bundle that was built for macOS: check_bundle.py BUNDLE."""
import plistlib
import sys
from pathlib import Path
from struct import unpack_from

LOAD_DYLIB, CODE_SIGNATURE, BUILD_VERSION = 0xC, 0x1D, 0x32

info = plistlib.loads(Path(sys.argv[1], "Contents/Info.plist").read_bytes())
assert info["LSUIElement"] is True and info["NSPrincipalClass"] == "NSApplication", info
program = Path(sys.argv[1], "Contents/MacOS", info["CFBundleExecutable"]).read_bytes()
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
