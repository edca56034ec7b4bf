# Compiles the kernels to PTX, and makes this a source file of the library, KORVEX_KERNEL_IMAGE. The
# compiler is a clang with the NVPTX target, whichever compiles the rest; it needs no CUDA toolkit,
# and doesn't look at one. Without such a clang the image is empty.

set(KERNEL_FOLDER ${CMAKE_CURRENT_LIST_DIR})
# Compute capability 7.0; later devices compile the same PTX. The inliner's limit lets every kernel
# become one function, which keeps its counters in registers.
set(KERNEL_FLAGS -x cuda --cuda-device-only --cuda-gpu-arch=sm_70 -nocudainc -nocudalib
                 --cuda-path=${KERNEL_FOLDER} -Wno-unknown-cuda-version -std=c++20 -O3
                 -ffp-contract=off -Wall -Wextra -mllvm -inline-threshold=100000 -S)

# A validator of find_program.
function(korvex_compiles_kernels result compiler)
  file(WRITE ${PROJECT_BINARY_DIR}/kernels/probe.cu "__attribute__((global)) void Probe() {}\n")
  execute_process(COMMAND ${compiler} ${KERNEL_FLAGS} probe.cu -o probe.ptx
                  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/kernels
                  RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
  if(failed)
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()
find_program(KORVEX_CUDA_CLANG
             NAMES clang++ clang++-19 clang++-18 clang++-17 clang++-16 clang++-15 clang++-14
             VALIDATOR korvex_compiles_kernels DOC "The clang++ that compiles the GPU's kernels")

set(KORVEX_KERNEL_IMAGE ${PROJECT_BINARY_DIR}/kernels/image.cpp)
if(KORVEX_CUDA_CLANG)
  set(KORVEX_KERNEL_PTX ${PROJECT_BINARY_DIR}/kernels/kernels.ptx)
  file(GLOB KERNEL_HEADERS CONFIGURE_DEPENDS ${KERNEL_FOLDER}/*.h
                                             ${PROJECT_SOURCE_DIR}/contract/nubrel/*.h)
  add_custom_command(
    OUTPUT ${KORVEX_KERNEL_PTX}
    COMMAND ${KORVEX_CUDA_CLANG} ${KERNEL_FLAGS} -I${PROJECT_SOURCE_DIR} ${KERNEL_FOLDER}/device.cu
            -o ${KORVEX_KERNEL_PTX}
    DEPENDS ${KERNEL_FOLDER}/device.cu ${KERNEL_HEADERS}
    COMMENT "Compiling the kernels for GPUs" VERBATIM)
else()
  message(STATUS "This build has no GPU back end: no clang++ with the NVPTX target was found. "
                 "On Debian and Ubuntu: apt-get install clang")
  set(KORVEX_KERNEL_PTX ${PROJECT_BINARY_DIR}/kernels/none.ptx)
  file(WRITE ${KORVEX_KERNEL_PTX} "")
endif()
add_custom_command(
  OUTPUT ${KORVEX_KERNEL_IMAGE}
  COMMAND ${CMAKE_COMMAND} -DIMAGE=${KORVEX_KERNEL_PTX} -DTARGET=${KORVEX_KERNEL_IMAGE} -P
          ${KERNEL_FOLDER}/embed.cmake
  DEPENDS ${KORVEX_KERNEL_PTX} ${KERNEL_FOLDER}/embed.cmake ${KERNEL_FOLDER}/image.cpp.in
  COMMENT "Embedding the kernels" VERBATIM)
# The image is one long literal.
set_source_files_properties(${KORVEX_KERNEL_IMAGE} PROPERTIES
                            COMPILE_OPTIONS -Wno-overlength-strings)
