SUMMARY = "Persistence library of a handheld antenna-alignment instrument"
SECTION = "libs"
# No licence was chosen by the owner yet: all rights are theirs.
LICENSE = "CLOSED"

# Where your copy of the source lies.
SRC_URI = "git://${TARNBEAM_SOURCE};branch=main;protocol=file"
SRCREV = "${AUTOREV}"
PV = "1.0.0+git${SRCPV}"
S = "${WORKDIR}/git"

DEPENDS = "qtbase sqlite3"
inherit cmake_qt5 pkgconfig useradd

EXTRA_OECMAKE = "-DTARNBEAM_BUILD_TESTS=OFF -DTARNBEAM_BUILD_TOOL=${@bb.utils.contains('PACKAGECONFIG', 'tool', 'ON', 'OFF', d)}"
PACKAGECONFIG ??= ""
# The program draws lines on the globe.
PACKAGECONFIG[tool] = ",,geographiclib"

# Whoever converts files is a member of this group.
USERADD_PACKAGES = "${PN}"
GROUPADD_PARAM:${PN} = "--system tarnbeam"

do_install:append() {
    install -d ${D}${libdir}/tmpfiles.d
    printf '%s\n' 'd /opt/tarnbeam/database 2775 root tarnbeam -' \
        'r /opt/tarnbeam/database/TemporaryDB.sqlite' > ${D}${libdir}/tmpfiles.d/tarnbeam.conf
}

PACKAGES =+ "${PN}-tool"
FILES:${PN}-tool = "${bindir}/tarnbeam-db ${datadir}/bash-completion"
FILES:${PN} += "${libdir}/tmpfiles.d/tarnbeam.conf"
