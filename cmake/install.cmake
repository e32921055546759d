# The library, its headers and the tool.
install(TARGETS corvane corvane_tool)
install(DIRECTORY include/corvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
