# What the project takes from Debian 12; docs/dependencies.md says what each is for.

set(Protobuf_USE_STATIC_LIBS ON)
find_package(Protobuf 3.21 REQUIRED)
find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(Boost 1.81 REQUIRED)
set(OPENSSL_USE_STATIC_LIBS TRUE)
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
find_package(CURL 7.85 REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(jsoncpp REQUIRED IMPORTED_TARGET jsoncpp)
pkg_check_modules(libedit REQUIRED IMPORTED_TARGET libedit)
find_package(CLI11 2 REQUIRED)
find_package(SQLite3 3.40 REQUIRED)

if(TRELLAN_TESTS)
  find_package(GTest REQUIRED)
endif()
