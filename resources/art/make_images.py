#!/usr/bin/env python3
"""Makes the images of the package from the SVG drawings beside this script.

    make_images.py            writes ../images, ../streamlabs/images and ../images.cmake
    make_images.py --check    writes nothing; fails when what is there differs from what the drawings give

Needs rsvg-convert (librsvg2-bin) and ImageMagick 6 or 7 (imagemagick).
"""

import argparse
import math
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from string import Template

ART = Path(__file__).resolve().parent
RESOURCES = ART.parent

# Version 7 calls its one program "magick" and complains about the old name.
MAGICK = shutil.which("magick") or shutil.which("convert")

# The folders become ":/images/" and ":/Streamlabs/images/".
KIT = "images"
PACKAGE = "streamlabs/images"

# Another version of the tools smooths edges and picks palettes a little differently. A pixel differs when a
# channel (0 to 255) is off by more than FLAT_TOLERANCE inside an evenly coloured area, or by more than
# EDGE_TOLERANCE anywhere; STRAY_SHARE of an image's pixels may differ.
FLAT_TOLERANCE = 8
EDGE_TOLERANCE = 72
STRAY_SHARE = 0.0005

# A button is drawn in its normal state, in NORMAL_INK. Where ON_PLATE stands, a state may put a plate behind
# the glyph.
NORMAL_INK = "#a1a1a1"
ON_PLATE = '  <g id="on-plate"'
STATES = {
    "n": (NORMAL_INK, None),
    "m": ("#ffffff", "#4a4a4a"),
    "c": ("#ff9900", "#141414"),
    "d": ("#575757", None),
}

# drawing in buttons/, the states it is shown in, whether widgets also want it as PNG
BUTTONS = (
    ("photo", "nmcd", True),
    ("text_edit", "nmcd", True),
    ("text_bold", "nmcd", False),
    ("text_italic", "nmcd", False),
    ("text_under_line", "nmcd", False),
    ("text_position_left", "nmcd", False),
    ("text_position_center", "nmcd", False),
    ("text_position_right", "nmcd", False),
    ("window_close", "nmcd", False),
    ("window_stting", "nmcd", False),
    ("refresh", "nmcd", False),
    ("tip", "nmcd", False),
    ("local_disk", "nm", False),
    ("icon_builder", "nm", False),
    ("combo_arrow", "nmd", False),
)

# SVG that widgets load as it is
DRAWINGS = (
    ("masks/invalid", f"{KIT}/mainpage_btn_invalid"),
    ("masks/knob_preview", f"{KIT}/mainpage_btn_knob_n"),
    ("masks/knob_skin", f"{KIT}/component_btn_knob_n"),
    ("masks/knob_disable", f"{KIT}/component_btn_knob_d_1"),
)

# drawing, PNG, whether a picture of twice the size goes with it for screens scaled up
STILLS = (
    ("app_icon", f"{KIT}/Zq900_Appicon_128", False),
    ("masks/click", f"{KIT}/mainpage_btn_click", True),
    ("masks/disable", f"{KIT}/mainpage_btn_disable", False),
    ("buttons/page_selected", f"{KIT}/component_btn_page_selected", True),
    ("buttons/page_unselected", f"{KIT}/component_btn_page_unselected", True),
    ("buttons/color_select", f"{KIT}/component_btn_color_select", True),
    ("menu/mixer", f"{PACKAGE}/mainpage_btn_slobs_mixer_on", True),
    ("menu/record", f"{PACKAGE}/mainpage_btn_slobs_record_on", True),
    ("menu/scenes", f"{PACKAGE}/mainpage_btn_slobs_scenes_on", True),
    ("menu/source", f"{PACKAGE}/mainpage_btn_slobs_source_on", True),
    ("menu/stream", f"{PACKAGE}/mainpage_btn_slobs_stream_on", True),
    ("faces/stream_off", f"{PACKAGE}/slobs_stream_off", True),
    ("faces/record_off", f"{PACKAGE}/slobs_record_off", True),
    ("faces/record_on", f"{PACKAGE}/slobs_record_on", True),
    ("faces/scene_off", f"{PACKAGE}/slobs_scene_off", True),
    ("faces/source_off", f"{PACKAGE}/slobs_source_off", True),
    ("faces/mute_off", f"{PACKAGE}/slobs_mute_off", True),
)


def swing(time, low, high):
    """Goes from low to high and back as time runs from 0 to 1."""
    return low + (high - low) * (1 - math.cos(2 * math.pi * time)) / 2


def radiate(time):
    """A bright crest runs outwards over the three waves."""
    return {f"wave{i + 1}": f"{swing(time - i / 3, 0.3, 1):.3f}" for i in range(3)}


def clap(time):
    return {"angle": f"{-swing(time, 3, 12):.2f}"}


def look_around(time):
    # The sine is flattened so that the eye rests on either side before it turns.
    side = math.sin(2 * math.pi * time)
    offset = 10 * math.tanh(2 * side) / math.tanh(2)
    return {"gaze": f"{75 + offset:.2f}", "glint": f"{79.5 + offset:.2f}"}


def throb(time):
    return {"weight": f"{swing(time, 9, 6):.2f}", "glow": f"{swing(time, 1, 0.65):.3f}"}


# drawing, GIF, number of frames, delay in hundredths of a second, values of the drawing's placeholders at a
# time from 0 to 1 of the loop
ANIMATIONS = (
    ("faces/stream_on", f"{PACKAGE}/slobs_stream_on", 12, 10, radiate),
    ("faces/scene_on", f"{PACKAGE}/slobs_scene_on", 12, 12, clap),
    ("faces/source_on", f"{PACKAGE}/slobs_source_on", 16, 15, look_around),
    ("faces/mute_on", f"{PACKAGE}/slobs_mute_on", 12, 12, throb),
)


def read(drawing):
    return (ART / f"{drawing}.svg").read_text(encoding="utf-8")


def in_state(drawing, state):
    ink, plate = STATES[state]
    text = drawing.replace(NORMAL_INK, ink)
    if plate:
        rect = f'  <rect width="24" height="24" rx="4" fill="{plate}"/>\n'
        text = text.replace(ON_PLATE, rect + ON_PLATE, 1)
    return text


def run(*command, stdin=None):
    return subprocess.run(command, input=stdin, stdout=subprocess.PIPE, check=True).stdout


def rasterise(svg, target, zoom=1):
    target.write_bytes(run("rsvg-convert", "--zoom", str(zoom), stdin=svg.encode()))


def still(svg, target, with_double):
    rasterise(svg, target.with_suffix(".png"))
    if with_double:
        rasterise(svg, target.with_name(f"{target.name}@2x.png"), 2)


def animate(drawing, target, count, delay, values):
    template = Template(drawing)
    with tempfile.TemporaryDirectory() as folder:
        frames = []
        for i in range(count):
            frame = Path(folder) / f"{i:02}.png"
            rasterise(template.substitute(values(i / count)), frame)
            frames.append(str(frame))
        # One palette for all frames keeps still parts from flickering.
        palette = str(Path(folder) / "palette.png")
        colours = ("+dither", "-treedepth", "8", "-colors", "255", "-unique-colors")
        run(MAGICK, *frames, "-append", *colours, palette)
        timing = ("-delay", str(delay), "-loop", "0")
        drawn = ("-alpha", "off", "+dither", "-remap", palette, "-layers", "OptimizeFrame")
        run(MAGICK, *timing, *frames, *drawn, str(target.with_suffix(".gif")))


def make_all(root):
    for folder in (KIT, PACKAGE):
        (root / folder).mkdir(parents=True, exist_ok=True)
    for name, states, as_png in BUTTONS:
        drawing = read(f"buttons/{name}")
        for state in states:
            target = root / KIT / f"component_btn_{name}_{state}"
            svg = in_state(drawing, state)
            target.with_suffix(".svg").write_text(svg, encoding="utf-8")
            if as_png:
                still(svg, target, with_double=True)
    for name, output in DRAWINGS:
        (root / f"{output}.svg").write_text(read(name), encoding="utf-8")
    for name, output, with_double in STILLS:
        still(read(name), root / output, with_double)
    for name, output, count, delay, values in ANIMATIONS:
        animate(read(name), root / output, count, delay, values)
    (root / "images.cmake").write_text(file_lists(root), encoding="utf-8")


def images(root):
    return {
        folder: sorted(path.relative_to(root).as_posix() for path in (root / folder).glob("*"))
        for folder in (KIT, PACKAGE)
    }


def file_lists(root):
    lines = ["# Written by art/make_images.py."]
    for variable, folder in (("kit_images", KIT), ("package_images", PACKAGE)):
        lines += ["", f"set({variable}"] + [f"  {name}" for name in images(root)[folder]]
        lines[-1] += ")"
    return "\n".join(lines) + "\n"


def pixels(path):
    """Size and delay of every frame, whether it loops for ever, and the frames' premultiplied RGBA bytes."""
    frames = run(MAGICK, str(path), "-coalesce", "-format", "%w %h %T\n", "info:").decode().splitlines()
    endless = b"NETSCAPE2.0" + bytes((3, 1, 0, 0, 0)) in path.read_bytes()
    data = bytearray(run(MAGICK, str(path), "-coalesce", "-depth", "8", "rgba:-"))
    for i in range(0, len(data), 4):
        alpha = data[i + 3]
        if alpha != 255:
            for channel in range(i, i + 3):
                data[channel] = data[channel] * alpha // 255
    return frames, endless, data


def distance(data, i, other, j):
    return max(abs(data[i + channel] - other[j + channel]) for channel in range(4))


def is_flat(data, i, stride):
    neighbours = (j for j in (i - 4, i + 4, i - stride, i + stride) if 0 <= j < len(data))
    return all(distance(data, i, data, j) <= 2 for j in neighbours)


def difference(made, kept):
    """Says in what two files of one name differ, or None."""
    if made.read_bytes() == kept.read_bytes():
        return None
    if made.suffix not in (".png", ".gif"):
        return "the text differs"
    made_frames, made_endless, data = pixels(made)
    kept_frames, kept_endless, other = pixels(kept)
    if (made_frames, made_endless) != (kept_frames, kept_endless):
        return "size, number of frames, delays or loop differ"
    stride = 4 * int(made_frames[0].split()[0])
    strays = 0
    for i in range(0, len(data), 4):
        off = distance(data, i, other, i)
        if off > EDGE_TOLERANCE or (off > FLAT_TOLERANCE and is_flat(data, i, stride)):
            strays += 1
    share = strays / (len(data) / 4)
    return f"{share:.2%} of the pixels differ" if share > STRAY_SHARE else None


def check():
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        make_all(root)
        names = {"images.cmake"}.union(*images(root).values())
        there = {"images.cmake"}.union(*images(RESOURCES).values())
        failures += [f"{name}: no drawing gives this file" for name in sorted(there - names)]
        for name in sorted(names):
            if not (RESOURCES / name).is_file():
                failures.append(f"{name}: missing")
            elif reason := difference(root / name, RESOURCES / name):
                failures.append(f"{name}: {reason}")
    for failure in failures:
        print(failure, file=sys.stderr)
    print(f"{len(names)} files, {len(failures)} differences")
    return 1 if failures else 0


def main():
    as_written = argparse.RawDescriptionHelpFormatter
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=as_written)
    parser.add_argument("--check", action="store_true", help="compare instead of writing")
    if parser.parse_args().check:
        return check()
    for folder in (KIT, PACKAGE):
        shutil.rmtree(RESOURCES / folder, ignore_errors=True)
    make_all(RESOURCES)
    return 0


if __name__ == "__main__":
    for tool in (shutil.which("rsvg-convert"), MAGICK):
        if not tool:
            sys.exit("rsvg-convert (librsvg2-bin) and ImageMagick (imagemagick) are needed")
    sys.exit(main())
