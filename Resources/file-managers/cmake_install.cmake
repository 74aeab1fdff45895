# Install script for directory: /tmp/stemvault-services/Resources/file-managers

# Set the install prefix
if(NOT DEFINED CMAKE_INSTALL_PREFIX)
  set(CMAKE_INSTALL_PREFIX "/usr/local")
endif()
string(REGEX REPLACE "/$" "" CMAKE_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")

# Set the install configuration name.
if(NOT DEFINED CMAKE_INSTALL_CONFIG_NAME)
  if(BUILD_TYPE)
    string(REGEX REPLACE "^[^A-Za-z0-9_]+" ""
           CMAKE_INSTALL_CONFIG_NAME "${BUILD_TYPE}")
  else()
    set(CMAKE_INSTALL_CONFIG_NAME "Debug")
  endif()
  message(STATUS "Install configuration: \"${CMAKE_INSTALL_CONFIG_NAME}\"")
endif()

# Set the component getting installed.
if(NOT CMAKE_INSTALL_COMPONENT)
  if(COMPONENT)
    message(STATUS "Install component: \"${COMPONENT}\"")
    set(CMAKE_INSTALL_COMPONENT "${COMPONENT}")
  else()
    set(CMAKE_INSTALL_COMPONENT)
  endif()
endif()

# Install shared libraries without execute permission?
if(NOT DEFINED CMAKE_INSTALL_SO_NO_EXE)
  set(CMAKE_INSTALL_SO_NO_EXE "1")
endif()

# Is this installation the result of a crosscompile?
if(NOT DEFINED CMAKE_CROSSCOMPILING)
  set(CMAKE_CROSSCOMPILING "FALSE")
endif()

# Set default install directory permissions.
if(NOT DEFINED CMAKE_OBJDUMP)
  set(CMAKE_OBJDUMP "/usr/bin/objdump")
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/dbus-1/services/net.stemvault.Connect.service)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/net.stemvault.Connect.service.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER Nautilus)
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/nautilus-python/extensions/stemvault_connect.py)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/extension.py.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER Caja)
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/caja-python/extensions/stemvault_connect.py)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/extension.py.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/kio/servicemenus/stemvault-connect.desktop)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/kio.desktop.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/nemo/actions/stemvault-connect-add.nemo_action)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/nemo-add.nemo_action.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/Thunar/sendto/stemvault-connect-add.desktop)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/thunar-add.desktop.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/file-manager/actions/stemvault-connect-add.desktop)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/action-add.desktop.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/nemo/actions/stemvault-connect-playlist.nemo_action)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/nemo-playlist.nemo_action.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/Thunar/sendto/stemvault-connect-playlist.desktop)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/thunar-playlist.desktop.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

if(CMAKE_INSTALL_COMPONENT STREQUAL "services" OR NOT CMAKE_INSTALL_COMPONENT)
  
        set(MIME_TYPES "audio/wav;audio/x-wav;audio/vnd.wave;audio/aiff;audio/x-aiff;audio/mpeg;audio/flac;audio/x-flac;audio/mp4;audio/x-m4a;video/mp4;video/quicktime;inode/directory;")
        set(MANAGER )
        set(COURIER ${CMAKE_INSTALL_PREFIX}/libexec/stemvault-connect/courier)
        set(PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/stemvault-connect)
        set(entry ${CMAKE_INSTALL_PREFIX}/share/file-manager/actions/stemvault-connect-playlist.desktop)
        message(STATUS "Installing: $ENV{DESTDIR}${entry}")
        configure_file("/tmp/stemvault-services/Resources/file-managers/action-playlist.desktop.in" "$ENV{DESTDIR}${entry}" @ONLY NO_SOURCE_PERMISSIONS)
endif()

