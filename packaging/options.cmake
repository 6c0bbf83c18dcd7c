# Run by cpack before it packs: what the shared library depends on.
# dpkg-shlibdeps wants to see a source package and, in it, one being built.
set(work ${CPACK_PACKAGE_DIRECTORY}/_CPack_Packages/shlibdeps)
file(WRITE ${work}/debian/control "")
file(MAKE_DIRECTORY ${work}/debian/package/DEBIAN)
file(COPY ${CPACK_RUK_LIBRARY} DESTINATION ${work}/debian/package)
cmake_path(GET CPACK_RUK_LIBRARY FILENAME library)
execute_process(COMMAND dpkg-shlibdeps -O debian/package/${library}
                WORKING_DIRECTORY ${work}
                OUTPUT_VARIABLE depends OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "shlibs:Depends=" "" ${CPACK_RUK_LIBRARY_DEPENDS} "${depends}")
