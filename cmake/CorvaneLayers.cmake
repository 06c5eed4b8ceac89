# The library's layers as targets that the compiler holds apart.
#
# corvane_layer(<name> DIRS <src folders> [FACADE <include/corvane headers>] [DEPS <layers>]) makes
# the static library corvane_<name> of the .cc files in its folders (tests left out). It compiles
# against an include root of its own, made of links to its folders and headers and to those of the
# layers it depends on, directly or not: a header of any other layer is simply not there, so an
# include that crosses the layers the wrong way fails to build. The layer's dependencies are linked
# publicly, so whoever links the layer gets what it needs.
function(corvane_layer name)
  cmake_parse_arguments(L "" "" "DIRS;FACADE;DEPS" ${ARGN})
  set(dirs ${L_DIRS})
  set(facade ${L_FACADE})
  set(deps "")
  foreach(dep ${L_DEPS})
    get_property(dep_dirs GLOBAL PROPERTY CORVANE_LAYER_${dep}_DIRS)
    get_property(dep_facade GLOBAL PROPERTY CORVANE_LAYER_${dep}_FACADE)
    list(APPEND dirs ${dep_dirs})
    list(APPEND facade ${dep_facade})
    list(APPEND deps corvane_${dep})
  endforeach()
  list(REMOVE_DUPLICATES dirs)
  list(REMOVE_DUPLICATES facade)
  set_property(GLOBAL PROPERTY CORVANE_LAYER_${name}_DIRS ${dirs})
  set_property(GLOBAL PROPERTY CORVANE_LAYER_${name}_FACADE ${facade})

  # The include root: links only, remade at every configure.
  set(root ${PROJECT_BINARY_DIR}/layers/${name})
  file(REMOVE_RECURSE ${root})
  file(MAKE_DIRECTORY ${root}/corvane)
  foreach(dir ${dirs})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${dir} ${root}/${dir} SYMBOLIC)
  endforeach()
  foreach(header ${facade})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/include/corvane/${header} ${root}/corvane/${header} SYMBOLIC)
  endforeach()
  set_property(GLOBAL PROPERTY CORVANE_LAYER_${name}_ROOT ${root})

  set(sources "")
  foreach(dir ${L_DIRS})
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${dir}/*.cc)
    list(APPEND sources ${found})
  endforeach()
  list(FILTER sources EXCLUDE REGEX "_test\\.cc$")
  add_library(corvane_${name} STATIC ${sources})
  target_include_directories(corvane_${name} PRIVATE ${root})
  target_link_libraries(corvane_${name} PUBLIC ${deps})
  set_property(GLOBAL APPEND PROPERTY CORVANE_LAYER_TARGETS corvane_${name})
endfunction()

# A test that the layer `name` cannot include `header`: it compiles a file that does, against the
# layer's include root, and passes when the compiler answers that there is no such header.
function(corvane_layer_refuses name header)
  get_property(root GLOBAL PROPERTY CORVANE_LAYER_${name}_ROOT)
  string(MAKE_C_IDENTIFIER "${header}" id)
  set(probe ${PROJECT_BINARY_DIR}/layers/probes/${name}_${id}.cc)
  file(WRITE ${probe} "#include \"${header}\"\n")
  add_test(NAME layer_${name}_without_${id}
           COMMAND ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only -I${root} ${probe})
  set_tests_properties(layer_${name}_without_${id} PROPERTIES
                       PASS_REGULAR_EXPRESSION "${header}: No such file or directory" LABELS layers)
endfunction()
