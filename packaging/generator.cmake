# generator.cmake: cpack reads it before it makes packages of one kind.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL debian)
endif()
