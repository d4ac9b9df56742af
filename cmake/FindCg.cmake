# Finds NVIDIA's Cg runtime and its OpenGL binding.
# Gives the imported targets Cg::Cg and Cg::CgGL; headers are included as <Cg/cg.h>.
find_path(Cg_INCLUDE_DIR NAMES Cg/cg.h)
find_library(Cg_LIBRARY NAMES Cg)
find_library(CgGL_LIBRARY NAMES CgGL)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Cg REQUIRED_VARS Cg_LIBRARY CgGL_LIBRARY Cg_INCLUDE_DIR)

if(Cg_FOUND)
  if(NOT TARGET Cg::Cg)
    add_library(Cg::Cg UNKNOWN IMPORTED)
    set_target_properties(Cg::Cg PROPERTIES
      IMPORTED_LOCATION "${Cg_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${Cg_INCLUDE_DIR}")
  endif()
  if(NOT TARGET Cg::CgGL)
    add_library(Cg::CgGL UNKNOWN IMPORTED)
    set_target_properties(Cg::CgGL PROPERTIES
      IMPORTED_LOCATION "${CgGL_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${Cg_INCLUDE_DIR}"
      INTERFACE_LINK_LIBRARIES "Cg::Cg")
  endif()
endif()
mark_as_advanced(Cg_INCLUDE_DIR Cg_LIBRARY CgGL_LIBRARY)
