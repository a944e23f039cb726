# Libraries that more than one folder uses, with what their static versions for Windows leave to their users.

find_package(PkgConfig REQUIRED)
pkg_check_modules(sodium REQUIRED IMPORTED_TARGET libsodium)
find_package(LibArchive REQUIRED)

if(WIN32)
    find_package(ZLIB REQUIRED)
    target_compile_definitions(PkgConfig::sodium INTERFACE SODIUM_STATIC)
    target_compile_definitions(LibArchive::LibArchive INTERFACE LIBARCHIVE_STATIC)
    target_link_libraries(LibArchive::LibArchive INTERFACE ZLIB::ZLIB bcrypt)
endif()
