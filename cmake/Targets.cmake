# The kinds of target that the project is built from.

# Warnings are errors in our own code; generated code and libraries come in as system headers.
add_library(trellan_options INTERFACE)
target_compile_options(trellan_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Wold-style-cast -Wcast-align -Woverloaded-virtual -Wdouble-promotion -Wformat=2
  -Wimplicit-fallthrough -Wunused
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>)
target_compile_definitions(trellan_options INTERFACE FMT_HEADER_ONLY
  BOOST_ASIO_NO_DEPRECATED BOOST_ERROR_CODE_HEADER_ONLY)

# trellan_library(NAME [SMALL] SOURCES … DEPENDS …): a static library, one folder. Headers are included as
# "<folder>/<Header>.h" from the folder's parent. SMALL is for a module that no key passes through: all
# of the program's text lies in memory, so what ships of it is built for size.
function(trellan_library name)
  cmake_parse_arguments(ARG "SMALL" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  get_filename_component(parent ${CMAKE_CURRENT_SOURCE_DIR} DIRECTORY)
  target_include_directories(${name} PUBLIC ${parent})
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE trellan_options)
  if(ARG_SMALL)
    target_compile_options(${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-Os>)
  endif()
endfunction()

# trellan_given_library(NAME FILE DEPENDS …): a library that was given on the command line of CMake, in
# the place of a module. An archive may need what its DEPENDS give: they stand behind it.
function(trellan_given_library name file)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "${name}: there is no file ${file}")
  endif()
  # By its full path: a .so without a name of its own would else be looked up where it was linked.
  add_library(${name}_given UNKNOWN IMPORTED GLOBAL)
  set_target_properties(${name}_given PROPERTIES
    IMPORTED_LOCATION ${file} INTERFACE_LINK_LIBRARIES "${ARG_DEPENDS}")
  add_library(${name} INTERFACE)
  target_link_libraries(${name} INTERFACE
    ${name}_given ${ARG_DEPENDS} ${CMAKE_DL_LIBS} Threads::Threads)
endfunction()

# trellan_program(NAME SOURCES … DEPENDS …): a program in bin/.
function(trellan_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} trellan_options)
endfunction()

# trellan_protos(NAME ROOT … FILES … IMPORTS … DEPENDS …): a static library of generated messages. The
# files are named from ROOT, as they import each other and as they are included; IMPORTS are further
# folders in which imports are looked up.
function(trellan_protos name)
  cmake_parse_arguments(ARG "" "ROOT" "FILES;IMPORTS;DEPENDS" ${ARGN})
  list(TRANSFORM ARG_IMPORTS PREPEND "-I")
  set(outputs)
  foreach(file ${ARG_FILES})
    get_filename_component(dir ${file} DIRECTORY)
    get_filename_component(stem ${file} NAME_WE)
    set(base ${CMAKE_CURRENT_BINARY_DIR}/generated/${dir}/${stem})
    add_custom_command(
      OUTPUT ${base}.pb.cc ${base}.pb.h
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/generated
      COMMAND ${CMAKE_COMMAND} -P ${PROJECT_SOURCE_DIR}/cmake/Protoc.cmake $<TARGET_FILE:protobuf::protoc>
              --cpp_out=${CMAKE_CURRENT_BINARY_DIR}/generated
              -I${ARG_ROOT} ${ARG_IMPORTS} ${ARG_ROOT}/${file}
      DEPENDS ${ARG_ROOT}/${file} protobuf::protoc
      VERBATIM)
    list(APPEND outputs ${base}.pb.cc)
  endforeach()
  add_library(${name} STATIC ${outputs})
  target_include_directories(${name} SYSTEM PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/generated)
  target_link_libraries(${name} PUBLIC protobuf::libprotobuf ${ARG_DEPENDS})
  # Without it generated code complains on standard error of each string field that holds no UTF-8,
  # and the blaster's frames are raw bytes in one.
  target_compile_definitions(${name} PRIVATE NDEBUG)
  set_target_properties(${name} PROPERTIES CXX_CLANG_TIDY "")
endfunction()

# trellan_test(NAME SOURCES … DEPENDS …): a GoogleTest program; each of its tests is one of ctest's.
function(trellan_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} GTest::gmock GTest::gtest_main trellan_options)
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests ENABLE_EXPORTS ON)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 60)
endfunction()

# trellan_fuzzer(NAME DEPENDS …): a libFuzzer program of one source, NAME.cpp, in fuzzers/. Each seed
# is one of ctest's, so that what a fuzzer once found stays found.
function(trellan_fuzzer name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} trellan_options)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzzers)
  file(GLOB seeds CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/seeds/${name}/*)
  if(seeds)
    add_test(NAME ${name}.seeds COMMAND ${name} ${seeds})
    set_tests_properties(${name}.seeds PROPERTIES TIMEOUT 60)
  endif()
endfunction()
