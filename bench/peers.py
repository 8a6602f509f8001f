#!/usr/bin/env python3
"""Times whole programs that reduce a picture to 256 colours with error diffusion and write it as an
interlaced GIF, gif89 first; its time includes checking the file. Runs are interleaved, so that all
see the same machine, and medians are compared. Peers that are not installed are left out; ffmpeg
writes no interlaced GIF and writes a plain one.

usage: bench/peers.py GIF89 PICTURE.ppm [RUNS]
"""

import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PILLOW = """
import sys
from PIL import Image
picture = Image.open(sys.argv[1]).convert('RGB')
palette = picture.quantize(256)
picture.quantize(palette=palette, dither=Image.Dither.FLOYDSTEINBERG).save(sys.argv[2], interlace=1)
"""


def find_commands(gif89, picture, output):
    python = shutil.which("python3", path="/usr/bin") or sys.executable
    commands = {
        "gif89": [gif89, "-qf", "--mode", "rgb", "-o", output, picture],
        "GraphicsMagick": ["gm", "convert", picture, "-interlace", "Line", "-dither",
                           "-colors", "256", output],
        "ImageMagick": [shutil.which("convert", path="/usr/bin") or "convert", picture,
                        "-interlace", "GIF", "-dither", "FloydSteinberg", "-colors", "256", output],
        "ffmpeg": ["ffmpeg", "-v", "error", "-y", "-i", picture, "-vf",
                   "split[a][b];[a]palettegen=256[p];[b][p]paletteuse=dither=floyd_steinberg",
                   output],
        "Pillow": [python, "-c", PILLOW, picture, output],
    }
    return {name: command for name, command in commands.items() if runs(command)}


def runs(command):
    return shutil.which(command[0]) and time_of(command) is not None


def time_of(command):
    start = time.perf_counter()
    result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start if result.returncode == 0 else None


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    count = int(sys.argv[3]) if len(sys.argv) == 4 else 15
    with tempfile.TemporaryDirectory() as folder:
        commands = find_commands(sys.argv[1], sys.argv[2], folder + "/out.gif")
        if "gif89" not in commands:
            sys.exit(f"{sys.argv[1]} does not export {sys.argv[2]}")
        times = {name: [] for name in commands}
        for _ in range(count):
            for name, command in commands.items():
                times[name].append(time_of(command))
    medians = {name: statistics.median(all_times) for name, all_times in times.items()}
    for name, median in sorted(medians.items(), key=lambda item: item[1]):
        print(f"{name:15} {1000 * median:7.1f} ms {median / medians['gif89']:6.1f}")


main()
