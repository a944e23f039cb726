# Libraries that more than one folder uses. Their static versions for Windows do not name all that they need, so this
# file adds the rest.

find_package(PkgConfig REQUIRED)
pkg_check_modules(sodium REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(deflate REQUIRED IMPORTED_TARGET libdeflate)
find_package(LibArchive REQUIRED)

if(WIN32)
    find_package(ZLIB REQUIRED)
    target_compile_definitions(PkgConfig::sodium INTERFACE SODIUM_STATIC)
    target_compile_definitions(LibArchive::LibArchive INTERFACE LIBARCHIVE_STATIC)
    target_link_libraries(LibArchive::LibArchive INTERFACE ZLIB::ZLIB bcrypt)
endif()
