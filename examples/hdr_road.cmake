# The host road of a high-dynamic-range picture: include(hdr_road.cmake) from
# examples/CMakeLists.txt. Run: hdr_road OUTDIR [INPUT.hdr|- [PLUGIN]]
add_executable(hdr_road ${CMAKE_CURRENT_LIST_DIR}/hdr_road.cpp)
target_link_libraries(hdr_road PRIVATE Effects)
if(NOT WIN32)
  find_package(PNG REQUIRED)
  target_link_libraries(hdr_road PRIVATE PNG::PNG ${CMAKE_DL_LIBS})
  target_compile_definitions(hdr_road PRIVATE EFFECTS_HAVE_PNG=1)
else()
  target_link_options(hdr_road PRIVATE -static)
endif()
