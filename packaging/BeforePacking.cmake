# Read by CPack before it packs, so that the same sources give the same bytes: all times in the
# packages are that of the last commit, and all modes those of one umask.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(
        COMMAND git log -1 --format=%ct
        WORKING_DIRECTORY "${CMAKE_CURRENT_LIST_DIR}"
        OUTPUT_VARIABLE date
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(date)
        set(ENV{SOURCE_DATE_EPOCH} ${date})
    endif()
endif()

execute_process(COMMAND sh -c umask OUTPUT_VARIABLE mask OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT mask EQUAL 22)
    message(FATAL_ERROR "Packages take their folders' modes from the umask: it must be 022")
endif()
