# Common settings for every target of the project.

set(QOR_WARNINGS -Wall -Wextra)
if(QOR_WERROR)
  list(APPEND QOR_WARNINGS -Werror)
endif()

if(QOR_SANITIZE)
  # -fno-sanitize=enum: the Cg runtime hands out user types as CGtype values beyond
  # the enumerators its header declares; that is how its API works, not a fault of ours.
  # float-cast-overflow: GCC leaves it out of "undefined", and values from effects and
  # command lines reach float-to-int conversions.
  add_compile_options(-fsanitize=address,undefined,float-cast-overflow -fno-sanitize=enum -fno-omit-frame-pointer
    -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(QOR_TSAN)
  # ThreadSanitizer, for the tests that run threads (label "threads").
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

if(QOR_FUZZ)
  # Coverage instrumentation in every target, so that the fuzzers are guided by the
  # library's and the platform's branches too; libFuzzer's own main is linked only into
  # the fuzz targets (-fsanitize=fuzzer in fuzz/CMakeLists.txt). Sanitizer settings as
  # for QOR_SANITIZE.
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "QOR_FUZZ needs clang: configure with CC=clang CXX=clang++")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize=enum -fno-omit-frame-pointer
    -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# qor_module(NAME SOURCES... [LINKS ...] [PRIVATE_LINKS ...])
# A shared platform or product library whose public headers sit in include/<NAME>/
# beside its sources; installed with its headers.
function(qor_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  add_library(Qor::${name} ALIAS ${name})
  target_compile_options(${name} PRIVATE ${QOR_WARNINGS})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  install(TARGETS ${name} EXPORT QorVisShadersTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
    install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  endif()
endfunction()

# qor_test(NAME SOURCES... LINKS... [GL] [SHARDS N]) adds a GoogleTest executable and
# registers it with CTest; GL tests carry the label "gl" and need an X display
# (xvfb-run). SHARDS N registers it as N tests NAME.0 ... (GoogleTest's sharding), so
# that a long suite runs beside itself under ctest -j.
function(qor_test name)
  cmake_parse_arguments(ARG "GL" "SHARDS" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  # The test code itself is compiled without optimisation, which halves its build time
  # (GoogleTest's and the JSON parser's templates): its run time is spent in the library
  # and the tool, which keep the build's optimisation.
  target_compile_options(${name} PRIVATE ${QOR_WARNINGS} -O0)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} QorTestSupport GTest::gtest GTest::gtest_main)
  set(tests ${name})
  if(ARG_SHARDS)
    set(tests)
    math(EXPR last "${ARG_SHARDS} - 1")
    foreach(shard RANGE ${last})
      add_test(NAME ${name}.${shard} COMMAND ${name})
      set_tests_properties(${name}.${shard} PROPERTIES
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${ARG_SHARDS};GTEST_SHARD_INDEX=${shard}")
      list(APPEND tests ${name}.${shard})
    endforeach()
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
  if(ARG_GL)
    set_tests_properties(${tests} PROPERTIES LABELS gl)
  endif()
endfunction()

# qor_library_module(NAME [DEPENDS MODULES...] [LINKS LIBRARIES...]): one module folder
# of the shader library (NAME.m), compiled as an object library and linked into the
# single shared QorVisShaders. NAME.m/src is private to the module (and to its tests);
# NAME.m/include holds what the module offers to the modules that name it under DEPENDS,
# and, through the header target NAMEHeaders, to a program that names the module (a
# renderer's driver for one implementation, such as qorfx's back ends). A module sees
# nothing else of its siblings, so including another module's header, private or not,
# fails to compile. Symbols are hidden unless a header exports them (QOR_VISSHADERS_API).
function(qor_library_module name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp)
  add_library(${name} OBJECT ${sources})
  target_compile_options(${name} PRIVATE ${QOR_WARNINGS})
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
  add_library(${name}Headers INTERFACE)
  add_library(Qor::${name}Headers ALIAS ${name}Headers)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/include)
    target_include_directories(${name}Headers INTERFACE
      $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  endif()
  set(dependency_headers)
  foreach(dependency ${ARG_DEPENDS})
    list(APPEND dependency_headers ${dependency}Headers)
  endforeach()
  target_link_libraries(${name}Headers INTERFACE QorVisShadersInterfaces ${dependency_headers} ${ARG_LINKS})
  install(TARGETS ${name}Headers EXPORT QorVisShadersTargets)
  target_link_libraries(${name} PUBLIC ${name}Headers ${ARG_DEPENDS})
  set_property(GLOBAL APPEND PROPERTY QOR_LIBRARY_MODULES ${name})
endfunction()

# qor_module_tests(NAME DIR LINKS... [INCLUDES ...] [SHARDS N]): the tests of one module,
# DIR/*Test.cpp; SHARDS splits its plain and GL suites as qor_test does.
# Files named *GLTest.cpp need an X display and go into NAMEGLTest (label "gl"); files
# named *ThreadTest.cpp run threads at the code and go into NAMEThreadTest (label
# "threads", also built by the ThreadSanitizer stage through the target QorThreadTests);
# the rest into NAMETest.
function(qor_module_tests name dir)
  cmake_parse_arguments(ARG "" "SHARDS" "LINKS;INCLUDES" ${ARGN})
  set(shards)
  if(ARG_SHARDS)
    set(shards SHARDS ${ARG_SHARDS})
  endif()
  file(GLOB all_tests CONFIGURE_DEPENDS ${dir}/*Test.cpp)
  file(GLOB gl_tests CONFIGURE_DEPENDS ${dir}/*GLTest.cpp)
  file(GLOB thread_tests CONFIGURE_DEPENDS ${dir}/*ThreadTest.cpp)
  set(plain_tests ${all_tests})
  if(gl_tests)
    list(REMOVE_ITEM plain_tests ${gl_tests})
    qor_test(${name}GLTest SOURCES ${gl_tests} LINKS ${ARG_LINKS} QorGL Cg::CgGL OpenGL::GL GL ${shards})
    target_include_directories(${name}GLTest PRIVATE ${ARG_INCLUDES})
  endif()
  if(thread_tests)
    list(REMOVE_ITEM plain_tests ${thread_tests})
    qor_test(${name}ThreadTest SOURCES ${thread_tests} LINKS ${ARG_LINKS} Threads::Threads)
    target_include_directories(${name}ThreadTest PRIVATE ${ARG_INCLUDES})
    set_tests_properties(${name}ThreadTest PROPERTIES LABELS threads)
    if(NOT TARGET QorThreadTests)
      add_custom_target(QorThreadTests)
    endif()
    add_dependencies(QorThreadTests ${name}ThreadTest)
  endif()
  if(plain_tests)
    qor_test(${name}Test SOURCES ${plain_tests} LINKS ${ARG_LINKS} ${shards})
    target_include_directories(${name}Test PRIVATE ${ARG_INCLUDES})
  endif()
endfunction()
