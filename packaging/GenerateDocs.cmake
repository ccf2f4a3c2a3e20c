# Writes what the program says about itself into OUT: the manual page (compressed the way
# Debian ships manuals), and the bash, zsh and fish completions.
#   cmake -DPROGRAM=path/to/brimvale -DOUT=dir -P GenerateDocs.cmake
foreach(output IN ITEMS "--man-page;brimvale.1" "--completion;bash;brimvale.bash" "--completion;zsh;_brimvale"
                        "--completion;fish;brimvale.fish")
    list(POP_BACK output file)
    execute_process(COMMAND "${PROGRAM}" ${output} OUTPUT_FILE "${OUT}/${file}" RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "brimvale ${output} failed (${status})")
    endif()
endforeach()
# -n leaves out the name and time, so the same page always compresses to the same bytes.
execute_process(COMMAND gzip -9nf "${OUT}/brimvale.1" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip failed on the manual page")
endif()
