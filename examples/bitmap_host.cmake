# A host that works on bitmaps and device contexts (the stand-in's own
# surfaces). Run: bitmap_host LIBRARY OUTDIR
add_executable(bitmap_host ${CMAKE_CURRENT_LIST_DIR}/bitmap_host.cpp)
target_link_libraries(bitmap_host PRIVATE example_support)
add_dependencies(bitmap_host Effects)
