# The host road of a high-dynamic-range picture. Run: hdr_road OUTDIR [INPUT.hdr|- [PLUGIN]]
add_executable(hdr_road ${CMAKE_CURRENT_LIST_DIR}/hdr_road.cpp)
target_link_libraries(hdr_road PRIVATE Effects example_support)
