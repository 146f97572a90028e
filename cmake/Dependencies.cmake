# What the house takes from Debian 12; docs/dependencies.md says what each is for.

set(Protobuf_USE_STATIC_LIBS ON)
find_package(Protobuf 3.21 REQUIRED)
find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(Boost 1.81 REQUIRED)
set(OPENSSL_USE_STATIC_LIBS TRUE)
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
find_package(PkgConfig REQUIRED)
pkg_check_modules(jsoncpp REQUIRED IMPORTED_TARGET jsoncpp)
find_package(CLI11 2 REQUIRED)

if(TRELLAN_TESTS)
  find_package(GTest REQUIRED)
endif()

# GCC's reader of symbols comes with the compiler, beside GCC's own headers: those are not for clang,
# so the folder is looked into last.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libbacktrace.a
  OUTPUT_VARIABLE backtrace_library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(backtrace_folder ${backtrace_library} DIRECTORY)
add_library(libbacktrace INTERFACE)
target_compile_options(libbacktrace INTERFACE -idirafter${backtrace_folder}/include)
target_link_libraries(libbacktrace INTERFACE ${backtrace_library})
