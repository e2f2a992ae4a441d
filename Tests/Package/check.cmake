# Installs the project into an empty folder and builds the example hosts against it as a user would, through the CMake
# package and through pkg-config. Arguments: PROJECT_BUILD, EXAMPLES, SCRATCH, C_COMPILER, CXX_COMPILER, LIBDIR.
cmake_minimum_required(VERSION 3.22)

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "${command}\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# At the node at x = 0.5 the temperature is 20 + 0.5 * 100.
function(expect_temperature program)
    run(${program})
    if(NOT output MATCHES "70 degrees")
        message(FATAL_ERROR "${program}\n${output}")
    endif()
endfunction()

set(prefix ${SCRATCH}/prefix)
file(REMOVE_RECURSE ${SCRATCH})
run(${CMAKE_COMMAND} --install ${PROJECT_BUILD} --prefix ${prefix})

# Comments of an installed header send nobody to one that is not there.
file(GLOB headers ${prefix}/include/*.h ${prefix}/include/veltrane/*.h)
set(names)
foreach(header IN LISTS headers)
    get_filename_component(name ${header} NAME)
    list(APPEND names ${name})
endforeach()
foreach(header IN LISTS headers)
    file(READ ${header} contents)
    string(REGEX MATCHALL "[A-Za-z_]+\\.h" mentioned "${contents}")
    foreach(name IN LISTS mentioned)
        if(NOT name IN_LIST names AND NOT name STREQUAL "mpi.h")
            message(FATAL_ERROR "${header} mentions ${name}, which is not installed")
        endif()
    endforeach()
endforeach()

set(build ${SCRATCH}/build)
run(${CMAKE_COMMAND} -S ${EXAMPLES}/Installed -B ${build} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
run(${CMAKE_COMMAND} --build ${build})
expect_temperature(${build}/transfer_in_c)
expect_temperature(${build}/transfer_in_cpp)
run(${build}/coupling)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
run(sh -c "${C_COMPILER} ${EXAMPLES}/transfer.c -o ${SCRATCH}/c_host $(pkg-config --cflags --libs veltrane)")
run(sh -c "${CXX_COMPILER} -std=c++20 ${EXAMPLES}/transfer.cpp -o ${SCRATCH}/cpp_host \
    $(pkg-config --cflags --libs veltrane-host)")
expect_temperature(${SCRATCH}/c_host)
expect_temperature(${SCRATCH}/cpp_host)

run(${prefix}/bin/veltrane --version)
