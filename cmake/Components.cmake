# Outside components, found once.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Widgets Test)
find_package(SQLite3 REQUIRED)
find_package(LibArchive REQUIRED)
find_package(LibXml2 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(ZSTD REQUIRED IMPORTED_TARGET libzstd)
pkg_check_modules(GMIME REQUIRED IMPORTED_TARGET gmime-3.0)
pkg_check_modules(MSPACK REQUIRED IMPORTED_TARGET libmspack)
pkg_check_modules(EXIV2 REQUIRED IMPORTED_TARGET exiv2)
pkg_check_modules(TAGLIB REQUIRED IMPORTED_TARGET taglib)
pkg_check_modules(WPD REQUIRED IMPORTED_TARGET libwpd-0.10 librevenge-0.0 librevenge-stream-0.0)
pkg_check_modules(WPS REQUIRED IMPORTED_TARGET libwps-0.4)
pkg_check_modules(UCHARDET REQUIRED IMPORTED_TARGET uchardet)
pkg_check_modules(SECCOMP REQUIRED IMPORTED_TARGET libseccomp)
find_library(STEMMER_LIBRARY stemmer REQUIRED)

# MuPDF comes as static archives whose .pc file does not name all they need.
add_library(mupdf_bundle INTERFACE)
target_link_libraries(mupdf_bundle INTERFACE
  mupdf mupdf-third freetype jpeg openjp2 jbig2dec harfbuzz gumbo mujs z m crypto)

if(BUILD_TESTING)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
