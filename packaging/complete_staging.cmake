# Run by cpack on the staged files of all packages: adds what Debian wants in /usr/share/doc and
# compresses what it wants compressed.

# Without name and time the same input gives the same package.
function(compress file)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(package IN LISTS CPACK_COMPONENTS_ALL)
    set(usr ${CPACK_TEMPORARY_DIRECTORY}/${package}/usr)
    file(COPY ${CPACK_RUK_DOCUMENTS} DESTINATION ${usr}/share/doc/${package}
         FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    compress(${usr}/share/doc/${package}/changelog)
    file(GLOB pages ${usr}/share/man/man*/*.[0-9])
    foreach(page IN LISTS pages)
        compress(${page})
    endforeach()
    # Debian's zsh looks for the completions of packages in a folder of its own.
    if(EXISTS ${usr}/share/zsh/site-functions)
        file(RENAME ${usr}/share/zsh/site-functions ${usr}/share/zsh/vendor-completions)
    endif()
endforeach()
