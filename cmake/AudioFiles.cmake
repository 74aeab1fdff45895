# stemvault_read_audio_files(FILE)
#
# Reads the list of audio file types, and sets in the caller's scope:
#   audio_extensions   in the order of the file
#   audio_types        without duplicates
function(stemvault_read_audio_files file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} lines REGEX "^[a-z0-9]+ ")
    foreach(line IN LISTS lines)
        separate_arguments(types UNIX_COMMAND "${line}")
        list(POP_FRONT types extension)
        list(APPEND audio_extensions ${extension})
        list(APPEND audio_types ${types})
    endforeach()
    list(REMOVE_DUPLICATES audio_types)
    set(audio_extensions ${audio_extensions} PARENT_SCOPE)
    set(audio_types ${audio_types} PARENT_SCOPE)
endfunction()
