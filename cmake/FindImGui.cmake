# Dear ImGui as Debian packages it: a static library with the GLFW and OpenGL back ends
# built in. Its pkg-config file requires "stb", which has none, so it is found directly,
# with the stb library its font atlas calls.
find_path(ImGui_INCLUDE_DIR imgui.h PATH_SUFFIXES imgui)
find_library(ImGui_LIBRARY NAMES imgui)
find_library(ImGui_stb_LIBRARY NAMES stb)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(ImGui REQUIRED_VARS ImGui_LIBRARY ImGui_stb_LIBRARY ImGui_INCLUDE_DIR)
if(ImGui_FOUND AND NOT TARGET ImGui::ImGui)
  add_library(ImGui::ImGui UNKNOWN IMPORTED)
  set_target_properties(ImGui::ImGui PROPERTIES IMPORTED_LOCATION "${ImGui_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${ImGui_INCLUDE_DIR}" INTERFACE_LINK_LIBRARIES "${ImGui_stb_LIBRARY};${CMAKE_DL_LIBS}")
endif()
mark_as_advanced(ImGui_INCLUDE_DIR ImGui_LIBRARY ImGui_stb_LIBRARY)
