# Makes the file IMAGE a string literal in the source file TARGET:
#   cmake -DIMAGE=... -DTARGET=... -P embed.cmake
file(READ ${IMAGE} ZQ_KERNEL_IMAGE)
configure_file(${CMAKE_CURRENT_LIST_DIR}/image.cpp.in ${TARGET} @ONLY)
file(TOUCH ${TARGET})
