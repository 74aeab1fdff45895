# The Debian package, which scripts/package builds with CPack.
set(STEMVAULT_MAINTAINER "Stemvault Connect developers <connect@stemvault.example>" CACHE STRING
    "The maintainer of the package: a name and an address")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME stemvault-connect)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "puts each audio bounce of a DAW session into its shared folder")
set(CPACK_PACKAGE_DESCRIPTION
"Stemvault Connect sits in the tray, finds out which session a digital audio
workstation has open, and watches that session's folder. When a new bounce has
stopped growing, it asks once which folder the file belongs in, and copies it
there, whole or not at all.

Pro Tools, Ableton Live, Cubase, Studio One and REAPER are recognised, native
or under Wine. Two entries in the menus of Caja, Dolphin, Nautilus, Nemo,
PCManFM and Thunar do the same for files that are there already.")
# The entries for the file managers contain the final paths of programs, so the files are installed
# below DESTDIR and not into another prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)
set(CPACK_STEMVAULT_SOURCE ${PROJECT_SOURCE_DIR})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${STEMVAULT_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${STEMVAULT_HOME_PAGE})
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/Resources/debian/prerm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# SHLIBDEPS finds the libraries that the programs link; the lists below add what they run or load by
# name. The SVG plugins draw the desktop's own icons in the folder panel; Debian 12 ships them with
# the library.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "ca-certificates, lsof, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "default-dbus-session-bus | dbus-session-bus, libglib2.0-bin, qt6-wayland, qt6-svg-plugins | libqt6svg6 (<< 6.5), wl-clipboard")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS
    "gnome-shell-extension-appindicator, python3-caja, python3-nautilus")
set(CPACK_DEBIAN_PACKAGE_ENHANCES
    "caja, dolphin, nautilus, nemo, pcmanfm, pcmanfm-qt, thunar")
include(CPack)
