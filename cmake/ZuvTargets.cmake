# zuv_library(<sub> DEPS <libs...>): static library zuv_<sub> from every .cpp in lib/<sub>,
# exported as zuv::<sub>; its headers are found as "<sub>/x.h" in the tree and once installed.
function(zuv_library sub)
  cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
  file(GLOB srcs CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(srcs)
    add_library(zuv_${sub} STATIC ${srcs})
    target_include_directories(zuv_${sub} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/lib>
                                                 $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zuv>)
    target_link_libraries(zuv_${sub} PUBLIC ${ARG_DEPS} Threads::Threads)
  else()
    add_library(zuv_${sub} INTERFACE)
    target_include_directories(zuv_${sub} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/lib>
                                                    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zuv>)
    target_link_libraries(zuv_${sub} INTERFACE ${ARG_DEPS})
  endif()
  set_target_properties(zuv_${sub} PROPERTIES EXPORT_NAME ${sub})
endfunction()

# zuv_test(<name> SOURCES <files> LIBS <libs> [LABELS <labels>]): a GoogleTest binary
# registered with CTest under its own name; label "unit" unless told otherwise.
function(zuv_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
  find_package(GTest REQUIRED)
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/lib ${PROJECT_SOURCE_DIR}
                                             ${PROJECT_SOURCE_DIR}/tests/support)
  # A binary that links the sandbox main runs wholly inside the private test sandbox.
  if("zuv_test_sandbox_main" IN_LIST ARG_LIBS)
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest Threads::Threads)
  else()
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  endif()
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT})
endfunction()

# zuv_add_subdirs(): add every subdirectory of the current one that has a CMakeLists.txt.
function(zuv_add_subdirs)
  file(GLOB entries LIST_DIRECTORIES true RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/*)
  foreach(d ${entries})
    if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${d} AND EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${d}/CMakeLists.txt)
      add_subdirectory(${d})
    endif()
  endforeach()
endfunction()
