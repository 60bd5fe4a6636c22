#!/usr/bin/python3
"""Reads what was built for macOS: check_bundle.py program BUNDLE, or check_bundle.py icon DRAWING TOOL."""
import plistlib
import subprocess
import sys
from io import BytesIO
from pathlib import Path

from macholib.mach_o import LC_BUILD_VERSION, LC_CODE_SIGNATURE, LC_LOAD_DYLIB
from macholib.MachO import MachO
from PIL.IcnsImagePlugin import IcnsFile


def check_program(bundle):
    info = plistlib.loads(Path(bundle, "Contents/Info.plist").read_bytes())
    assert info["LSUIElement"] is True and info["NSPrincipalClass"] == "NSApplication", info
    program, = MachO(f"{bundle}/Contents/MacOS/{info['CFBundleExecutable']}").headers
    kind = program.header.magic, program.header.cputype, program.header.filetype
    assert kind == (0xFEEDFACF, 0x0100000C, 2), "no program for arm64"
    commands = {load.cmd: command for load, command, _ in program.commands}
    libraries = [name.rstrip(b"\0").decode() for load, _, name in program.commands if load.cmd == LC_LOAD_DYLIB]
    platform, minimum = commands[LC_BUILD_VERSION].platform, commands[LC_BUILD_VERSION].minos
    assert (platform, f"{minimum >> 16}.{minimum >> 8 & 255}") == (1, info["LSMinimumSystemVersion"]), minimum
    public = ("/System/Library/Frameworks/", "/usr/lib/libobjc.A.dylib", "/usr/lib/libSystem.B.dylib")
    assert LC_CODE_SIGNATURE in commands and len(libraries) > 5, commands.keys()
    assert all(name.startswith(public) for name in libraries), libraries


def check_icon(drawing, tool):
    subprocess.run([tool, drawing, "made.icns"], check=True)
    assert subprocess.run([tool, "/nowhere.svg", "none.icns"], capture_output=True).returncode == 1
    icon = IcnsFile(BytesIO(Path("made.icns").read_bytes()))
    pictures = {size: icon.getimage(size) for size in icon.itersizes()}
    assert set(pictures) == {(edge, edge, scale) for edge in (16, 32, 128, 256, 512) for scale in (1, 2)}, pictures
    for (edge, _, scale), picture in pictures.items():
        assert picture.size == (edge * scale, edge * scale) and len(picture.getcolors(1 << 20)) > 64, picture


{"program": check_program, "icon": check_icon}[sys.argv[1]](*sys.argv[2:])
