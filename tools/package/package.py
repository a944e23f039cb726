#!/usr/bin/python3
"""Packs the programs that ./dev windows or ./dev package has built.
The package is build/Corvadine-VERSION-win64.zip or build/Corvadine-VERSION-debian12-amd64.tar.gz. It has one folder,
Corvadine, with the programs, the help, README, LICENSE and the licences of all libraries in the programs.

Usage: tools/package/package.py BUILD_FOLDER      (build/windows or build/release)

The same build gives the same bytes, because files are sorted and all have the time of the last commit. The script fails
if a library has no entry in LIBRARIES, so that no library is shipped without its licence. Needs Python 3, ninja,
and the Debian packages that hold the libraries, for their licences.
"""

import gzip
import io
import os
import re
import subprocess
import sys
import tarfile
import time
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
TEMPLATES = Path(__file__).resolve().parent
COMMON_LICENCES = Path("/usr/share/common-licenses")

PROGRAMS = {
    "corvadine": "the window",
    "corvadine-cli": "the same work on the command line; corvadine-cli --help lists its commands",
}
BUNDLED = ("upd",)  # programs inside of PROGRAMS
HELP_FILE = "Corvadine.chm"
FOLDER = "Corvadine"  # no version, so that a new release is unpacked over the old release and finds the projects

# For each static library: the pattern of its file name, its name, and the Debian package whose copyright file holds its
# licence. Qt's file also has the licences of the libraries inside of Qt.
LIBRARIES = (
    (r"libQt6.*|libq(gif|ico|jpeg|windows|windowsvistastyle|schannelbackend|certonlybackend|tuiotouchplugin)", "Qt", "qt6-base-dev"),
    (r"libq(tiff|webp)", "Qt Image Formats", "qt6-image-formats-plugins"),
    (r"libSQLiteCpp", "SQLiteCpp", "libsqlitecpp-dev"),
    (r"libsqlite3", "SQLite", "libsqlite3-dev"),
    (r"libhwy", "Highway", "libhwy-dev"),
    (r"libimagequant", "libimagequant", "libimagequant-dev"),
    (r"libdeflate", "libdeflate", "libdeflate-dev"),
    (r"liblcms2", "Little CMS", "liblcms2-dev"),
    (r"libpng", "libpng", "libpng-dev"),
    (r"libz", "zlib", "zlib1g-dev"),
    (r"libsodium", "libsodium", "libsodium-dev"),
    (r"libarchive", "libarchive", "libarchive-dev"),
)
EMPTY_LIBRARIES = ("libpthread",)  # its content is in the C library
HEADER_LIBRARIES = (("CLI11", "libcli11-dev"),)
WINDOWS_RUNTIME = (("MinGW-w64 runtime", "mingw-w64-common"), ("GCC runtime", "gcc-mingw-w64-base"))


def fail(message):
    sys.exit(f"package.py: {message}")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Build:
    """A build folder: version, system, programs and the libraries in them."""

    def __init__(self, folder):
        self.folder = folder
        cache = (folder / "CMakeCache.txt").read_text(encoding="utf-8")
        self.version = re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.*)$", cache, re.M).group(1)
        self.for_windows = (folder / "bin" / "corvadine.exe").exists()

    def program(self, name):
        return self.folder / "bin" / (name + (".exe" if self.for_windows else ""))

    def static_libraries(self):
        """Returns the file names, without extension, of the outside libraries that are linked into the programs."""
        found = set()
        for name in (*PROGRAMS, *BUNDLED):
            target = self.program(name).relative_to(self.folder)
            link = output_of("ninja", "-C", str(self.folder), "-t", "commands", "-s", str(target))
            found |= {Path(word).stem for word in link.split() if re.match(r"/.*\.a$", word)}
        return sorted(found - set(EMPTY_LIBRARIES))

    def library_packages(self):
        """Returns the Debian packages with the shared libraries that the programs load."""
        files = set()
        for name in PROGRAMS:
            needed = re.findall(r"NEEDED +(\S+)", output_of("objdump", "-p", str(self.program(name))))
            places = dict(re.findall(r"(\S+) => (\S+)", output_of("ldd", str(self.program(name)))))
            files |= {os.path.realpath(places[library]) for library in needed if library in places}
        # Packages may name a file by the folder /lib, which is a link to /usr/lib.
        patterns = [f"*{file.removeprefix('/usr')}" for file in sorted(files)]
        owners = {line.split(":")[0] for line in output_of("dpkg-query", "-S", *patterns).splitlines()}
        return sorted(owners | {"qt6-image-formats-plugins"})


def licences_needed(build):
    needed = dict(HEADER_LIBRARIES + (WINDOWS_RUNTIME if build.for_windows else ()))
    for library in build.static_libraries():
        known = [(name, package) for pattern, name, package in LIBRARIES if re.fullmatch(pattern, library)]
        if not known:
            fail(f"no licence is known for {library}; add it to LIBRARIES")
        needed |= dict(known)
    return needed


def licence_files(build):
    """Returns the licence of each library, and the common licences that these licences mention."""
    files = {}
    for name, package in licences_needed(build).items():
        text = Path("/usr/share/doc", package, "copyright").read_text(encoding="utf-8")
        files[f"licences/{name}.txt"] = text
    mentioned = re.findall(f"{COMMON_LICENCES}/([A-Za-z0-9]+(?:[.-][0-9]+)*)", "\n".join(files.values()))
    for name in set(mentioned):
        files[f"licences/common/{name}.txt"] = (COMMON_LICENCES / name).read_text(encoding="utf-8")
    return files


def contents(build):
    """Returns the list of files for the README, one line for each file with its description."""
    suffix = ".exe" if build.for_windows else ""
    rows = [(name + suffix, description) for name, description in PROGRAMS.items()]
    rows.append((HELP_FILE, "the help, which the window's Help button opens"))
    rows.append(("LICENSE.txt", "the licence of Corvadine"))
    rows.append(("licences", "those of the libraries that are part of the programs"))
    width = max(len(name) for name, _ in rows) + 3
    return "\n".join(f"    {name:<{width}}{description}" for name, description in rows)


def readme(build):
    template = TEMPLATES / ("README-windows.txt" if build.for_windows else "README-linux.txt")
    text = template.read_text(encoding="utf-8")
    text = text.replace("@VERSION@", build.version).replace("@CONTENTS@", contents(build))
    if "@PACKAGES@" in text:
        text = text.replace("@PACKAGES@", " \\\n        ".join(build.library_packages()))
    return text


def package_files(build):
    """Returns the bytes of each file, by its path in the package."""
    texts = {"README.txt": readme(build), "LICENSE.txt": (ROOT / "LICENSE").read_text(encoding="utf-8")}
    texts |= licence_files(build)
    line_end = "\r\n" if build.for_windows else "\n"
    files = {path: text.replace("\n", line_end).encode() for path, text in texts.items()}
    for name in PROGRAMS:
        program = build.program(name)
        files[program.name] = program.read_bytes()
    files[HELP_FILE] = (build.folder / "bin" / HELP_FILE).read_bytes()
    return files


def time_stamp():
    """Returns the time of the last commit. Without a repository, returns the earliest time that a zip file can hold."""
    try:
        return int(output_of("git", "-C", str(ROOT), "log", "-1", "--format=%ct"))
    except (OSError, subprocess.CalledProcessError):
        return 315532800  # 1980-01-01


def write_zip(path, folder, files, stamp):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in sorted(files):
            entry = zipfile.ZipInfo(f"{folder}/{name}", time.gmtime(stamp)[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            archive.writestr(entry, files[name])


def write_tar(path, folder, files, stamp, programs):
    with path.open("wb") as raw, gzip.GzipFile("", "wb", 9, raw, stamp) as packed, tarfile.open(
        fileobj=packed, mode="w", format=tarfile.USTAR_FORMAT
    ) as archive:
        for name in sorted(files):
            entry = tarfile.TarInfo(f"{folder}/{name}")
            entry.size, entry.mtime, entry.mode = len(files[name]), stamp, 0o755 if name in programs else 0o644
            archive.addfile(entry, io.BytesIO(files[name]))


def main():
    if len(sys.argv) != 2:
        fail("usage: package.py BUILD_FOLDER")
    build = Build(Path(sys.argv[1]).resolve())
    files = package_files(build)
    system = "win64.zip" if build.for_windows else "debian12-amd64.tar.gz"
    path = ROOT / "build" / f"Corvadine-{build.version}-{system}"
    if build.for_windows:
        write_zip(path, FOLDER, files, time_stamp())
    else:
        write_tar(path, FOLDER, files, time_stamp(), PROGRAMS)
    print(f"{path.relative_to(ROOT)}  ({path.stat().st_size} bytes, {len(files)} files)")


if __name__ == "__main__":
    main()
