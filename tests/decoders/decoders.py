"""Other programs and libraries that read GIF files, each behind one call: a list of paths in, for
each path what the decoder made of it out. A decoder leaves None where it does not say something."""

import base64
import concurrent.futures
import ctypes
import ctypes.util
import dataclasses
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

CHROMIUM_NAMES = ("chromium", "chromium-browser", "google-chrome")


@dataclasses.dataclass
class Picture:
    rgba: bytes | None = None  # four bytes a pixel
    columns: int | None = None
    rows: int | None = None
    indices: bytes | None = None
    table: bytes | None = None
    transparent: int | None = None  # -1 for none
    interlaced: bool | None = None
    comment: bytes | None = None  # empty for none
    failure: str | None = None  # what the decoder said when it gave up


def find_decoders():
    """name: call for those that are installed, and a list of the names of the others."""
    found = {name: find() for name, find in (
        ("giflib", find_giflib), ("ImageMagick", find_image_magick),
        ("GraphicsMagick", find_graphics_magick), ("ffmpeg", find_ffmpeg), ("Pillow", find_pillow),
        ("libvips", find_vips), ("Chromium", find_chromium))}
    return ({name: decode for name, decode in found.items() if decode},
            [name for name, decode in found.items() if not decode])


def program(name):
    # The system's own first: a program of that name elsewhere may be another one.
    return shutil.which(name, path="/usr/bin") or shutil.which(name)


def run(*command):
    result = subprocess.run(command, capture_output=True, stdin=subprocess.DEVNULL)
    if result.returncode != 0:
        said = result.stderr.decode(errors="replace").splitlines()
        raise RuntimeError(said[0] if said else f"exit status {result.returncode}")
    return result.stdout


def each(decode):
    """A decoder of many files out of one for a single file that may raise an exception."""
    def guarded(path):
        try:
            return decode(path)
        except Exception as problem:  # whatever a decoder dislikes is its verdict on the file
            return Picture(failure=str(problem) or type(problem).__name__)

    def decode_all(paths):
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return list(pool.map(guarded, paths))

    return decode_all


# giflib ---------------------------------------------------------------------------------------


class ColorMap(ctypes.Structure):
    _fields_ = [("count", ctypes.c_int), ("bits", ctypes.c_int), ("sorted", ctypes.c_bool),
                ("colors", ctypes.POINTER(ctypes.c_ubyte))]


class ImageDesc(ctypes.Structure):
    _fields_ = [("left", ctypes.c_int), ("top", ctypes.c_int), ("width", ctypes.c_int),
                ("height", ctypes.c_int), ("interlace", ctypes.c_bool),
                ("map", ctypes.POINTER(ColorMap))]


class Extension(ctypes.Structure):
    _fields_ = [("size", ctypes.c_int), ("bytes", ctypes.POINTER(ctypes.c_ubyte)),
                ("function", ctypes.c_int)]


class SavedImage(ctypes.Structure):
    _fields_ = [("desc", ImageDesc), ("raster", ctypes.POINTER(ctypes.c_ubyte)),
                ("extension_count", ctypes.c_int), ("extensions", ctypes.POINTER(Extension))]


class GifFile(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int), ("resolution", ctypes.c_int),
                ("background", ctypes.c_int), ("aspect", ctypes.c_ubyte),
                ("map", ctypes.POINTER(ColorMap)), ("image_count", ctypes.c_int),
                ("image", ImageDesc), ("images", ctypes.POINTER(SavedImage))]


COMMENT, CONTINUED, GRAPHIC_CONTROL = 0xFE, 0, 0xF9


def find_giflib():
    name = ctypes.util.find_library("gif")
    if not name or not name.endswith(".7"):  # the records above are this version's
        return None
    library = ctypes.CDLL(name)
    library.DGifOpenFileName.restype = ctypes.POINTER(GifFile)
    library.GifErrorString.restype = ctypes.c_char_p

    def decode(path):
        error = ctypes.c_int()
        gif = library.DGifOpenFileName(os.fsencode(path), ctypes.byref(error))
        if not gif:
            raise RuntimeError(library.GifErrorString(error.value).decode())
        try:
            if library.DGifSlurp(gif) != 1 or gif.contents.image_count != 1:
                raise RuntimeError("not one whole image")
            return picture_of_giflib(gif.contents)
        finally:
            library.DGifCloseFile(gif, None)

    return each(decode)


def picture_of_giflib(gif):
    image = gif.images[0]
    picture = Picture(columns=image.desc.width, rows=image.desc.height, transparent=-1,
                      interlaced=image.desc.interlace, comment=b"")
    picture.table = bytes(gif.map.contents.colors[: 3 * gif.map.contents.count])
    picture.indices = bytes(image.raster[: picture.columns * picture.rows])
    for extension in image.extensions[: image.extension_count]:
        content = bytes(extension.bytes[: extension.size])
        if extension.function in (COMMENT, CONTINUED):
            picture.comment += content
        if extension.function == GRAPHIC_CONTROL and content[0] & 1:
            picture.transparent = content[3]
    return picture


# Programs -------------------------------------------------------------------------------------


def find_image_magick():
    convert = program("convert")
    if not convert or b"ImageMagick" not in subprocess.run([convert, "-version"],
                                                            capture_output=True).stdout:
        return None

    def decode(path):
        with tempfile.NamedTemporaryFile() as pixels:
            said = run(convert, path, "-write", "RGBA:" + pixels.name, "-format",
                       "%w %h %[interlace]\n%c", "info:-")
            head, _, comment = said.partition(b"\n")
            columns, rows, interlace = head.split()
            return Picture(pixels.read(), int(columns), int(rows), comment=comment,
                           interlaced=interlace != b"Undefined" and interlace != b"None")

    return each(decode)


def find_graphics_magick():
    gm = program("gm")

    def decode(path):
        said = run(gm, "identify", "-format", "%w\\n%h\\n%c", path)
        columns, rows, comment = said.split(b"\n", 2)
        return Picture(run(gm, "convert", path, "RGBA:-"), int(columns), int(rows),
                       comment=comment.removesuffix(b"\n"))

    return each(decode) if gm else None


def find_ffmpeg():
    ffmpeg = program("ffmpeg")

    def decode(path):
        with tempfile.NamedTemporaryFile() as said:
            pixels = run(ffmpeg, "-v", "error", "-xerror", "-y", "-i", path, "-f", "rawvideo",
                         "-pix_fmt", "rgba", "-", "-f", "ffmetadata", said.name)
            tags = re.search(rb"^comment=((?:\\.|[^\\\n])*)", said.read(), re.DOTALL | re.M)
        comment = re.sub(rb"\\(.)", rb"\1", tags[1], flags=re.DOTALL) if tags else b""
        return Picture(pixels, comment=comment)

    return each(decode) if ffmpeg else None


def find_vips():
    vips = program("vips")

    def decode(path):
        with tempfile.NamedTemporaryFile() as raw:
            run(vips, "rawsave", path, raw.name)
            pixels = raw.read()
        shape = re.search(rb": (\d+)x(\d+) uchar, (\d) bands", run(vips + "header", path))
        columns, rows, bands = map(int, shape.groups())
        if bands == 3:
            pixels = b"".join(pixels[at : at + 3] + b"\xff" for at in range(0, len(pixels), 3))
        return Picture(pixels, columns, rows)

    return each(decode) if vips else None


# Pillow ---------------------------------------------------------------------------------------


def find_pillow():
    try:
        from PIL import Image
    except ImportError:
        return None

    def decode(path):
        with Image.open(path) as image:
            interlaced = bool(image.tile[0][3][1])
            image.load()
            picture = Picture(image.convert("RGBA").tobytes(), *image.size, interlaced=interlaced,
                              transparent=image.info.get("transparency", -1),
                              comment=image.info.get("comment", b""))
            picture.indices = image.tobytes()
            return picture

    return each(decode)


# Chromium -------------------------------------------------------------------------------------

PAGE_SIZE = 40  # files
PAGE = """<!DOCTYPE html><body>%s<script>
onload = () => {
    for (const image of document.images) {
        const canvas = document.createElement("canvas"), said = document.createElement("p");
        canvas.width = image.naturalWidth;
        canvas.height = image.naturalHeight;
        let pixels = "";
        if (canvas.width && canvas.height) {
            const context = canvas.getContext("2d");
            context.drawImage(image, 0, 0);
            const bytes = context.getImageData(0, 0, canvas.width, canvas.height).data;
            for (let at = 0; at < bytes.length; at += 4096)
                pixels += String.fromCharCode(...bytes.subarray(at, at + 4096));
        }
        said.textContent = [canvas.width, canvas.height, btoa(pixels)].join(" ");
        document.body.append(said);
    }
    for (const image of [...document.images]) image.remove();
};
</script>"""


def find_chromium():
    chromium = next(filter(None, map(program, CHROMIUM_NAMES)), None)

    def decode_page(paths):
        tags = "".join('<img src="data:image/gif;base64,%s">'
                       % base64.b64encode(pathlib.Path(path).read_bytes()).decode()
                       for path in paths)
        with tempfile.TemporaryDirectory() as folder:
            page = os.path.join(folder, "page.html")
            pathlib.Path(page).write_text(PAGE % tags)
            # The page is ours, and as root the browser does without its sandbox or not at all.
            result = run("timeout", "120", chromium, "--headless", "--no-sandbox", "--disable-gpu",
                         "--disable-dev-shm-usage", "--force-color-profile=srgb",
                         "--user-data-dir=" + os.path.join(folder, "profile"), "--dump-dom",
                         "file://" + page).decode()
        said = re.findall(r"<p>(\d+) (\d+) ([^<]*)</p>", result)
        if len(said) != len(paths):
            return [Picture(failure="the page did not finish")] * len(paths)
        return [Picture(base64.b64decode(pixels), int(columns), int(rows),
                        failure=None if pixels else "the image was not shown")
                for columns, rows, pixels in said]

    def decode_all(paths):
        return [picture for start in range(0, len(paths), PAGE_SIZE)
                for picture in decode_page(paths[start : start + PAGE_SIZE])]

    return decode_all if chromium else None
