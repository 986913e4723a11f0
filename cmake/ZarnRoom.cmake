# The library of one folder ("room"):
# zarn_add_room(<name>
#   SOURCES <file>...          compiled into zarn_<name>, alias zarn::<name>
#   HEADERS <file>...          public: installed, and each must compile alone
#   PRIVATE_HEADERS <file>...
#   PUBLIC <target>...         libraries that the public headers include
#   LINK_ONLY <target>...      libraries that only the sources include
#   PRIVATE <target>...        header-only libraries that only the sources include
#   NOT_INSTALLED              linked into its programs
#   MEASURED                   its speed counts: optimised, each source stays alone,
#   TOGETHER <file>...)        but these, which take long to compile
#
# The libraries are shared: the tables and the log belong to the process, and two
# copies of them, for example in Python and in ROOT, would not know of each other.
function(zarn_add_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "NOT_INSTALLED;MEASURED" ""
    "SOURCES;HEADERS;PRIVATE_HEADERS;PUBLIC;LINK_ONLY;PRIVATE;TOGETHER")
  set(target zarn_${name})
  set(kind "")
  if(room_NOT_INSTALLED)
    set(kind STATIC)
  endif()
  add_library(${target} ${kind} ${room_SOURCES} ${room_PRIVATE_HEADERS})
  add_library(zarn::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    POSITION_INDEPENDENT_CODE ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    INSTALL_RPATH "${ZARN_LIBRARY_RPATH}")
  # Optimised as one source, reading files became a tenth slower.
  if(room_MEASURED AND CMAKE_BUILD_TYPE STREQUAL "Release")
    set_property(TARGET ${target} PROPERTY UNITY_BUILD_MODE GROUP)
    set_property(SOURCE ${room_TOGETHER} PROPERTY UNITY_GROUP together)
  endif()
  # A function calls another one of its library directly, as in a static one. Messages
  # name sources without the folder of the build, so that no installed file does.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_sources(${target} PUBLIC FILE_SET HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR}
    FILES ${room_HEADERS})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  target_link_libraries(${target}
    PUBLIC ${room_PUBLIC} zarn::fp
    PRIVATE ${room_LINK_ONLY} $<BUILD_INTERFACE:zarn_warnings>)
  foreach(library IN LISTS room_PRIVATE)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:${library}>)
  endforeach()
  if(NOT room_NOT_INSTALLED)
    install(TARGETS ${target} EXPORT zarnTargets
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT libraries NAMELINK_COMPONENT development
      FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zarn
        COMPONENT headers)
  endif()
endfunction()
