SUMMARY = "Command tables, in-memory files and event-log client of a radio unit's applications"
SECTION = "libs"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=8924e103685453ae68a45401a824f3a8"

# Where the source archive is: "https://HOST/FOLDER/", or "file://" for the folder "files" beside this recipe.
CORVANE_SOURCES ?= "file://"
SRC_URI = "${CORVANE_SOURCES}corvane-${PV}.tar.xz"
SRC_URI[sha256sum] = "tools/release writes the digest here"

# The recipe of the unit's own libzel, libpindle and libtpx.
CORVANE_PLATFORM_RECIPE ?= ""
DEPENDS = "lttng-ust ${CORVANE_PLATFORM_RECIPE}"

# For images that aren't for units, such as those of an emulator: the stand-ins for these libraries, and elogEngine.
PACKAGECONFIG ??= ""
PACKAGECONFIG[standins] = "-DCORVANE_PLATFORM=host,-DCORVANE_PLATFORM=sdk"

# The loader knows the folders of an image, so no file names one.
EXTRA_OECMAKE = "-DCORVANE_LTTNG=system -DCORVANE_BUILD_TESTS=OFF -DCORVANE_BUILD_EXAMPLES=OFF -DCMAKE_SKIP_RPATH=ON"

inherit cmake pkgconfig ${@bb.utils.contains('PACKAGECONFIG', 'standins', 'bash-completion', '', d)}
