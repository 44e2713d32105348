# A room is one folder of the source tree, compiled to objects: an archive would drop the
# registrations that nobody calls.
function(tarnel_room name)
    add_library(${name} OBJECT ${ARGN})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC Threads::Threads)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ${TARNEL_UNITY})
endfunction()

# A shared library made of rooms, exporting only what its version script names.
function(tarnel_shared_library name version_script)
    add_library(${name} SHARED)
    add_library(TarnelToolBoxLib::${name} ALIAS ${name})
    target_link_libraries(${name} PRIVATE ${ARGN})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${TARNEL_INCLUDE_DIR}>)
    target_compile_features(${name} INTERFACE cxx_std_20)
    target_link_options(${name} PRIVATE LINKER:--version-script=${version_script})
    set_target_properties(${name} PROPERTIES LINK_DEPENDS ${version_script}
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
endfunction()

# Turns a file into the constant array tarnel::`variable` and its size tarnel::`variable`_size.
function(tarnel_embed output variable file)
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DINPUT=${file} -DOUTPUT=${output} -DVARIABLE=${variable}
                -P ${PROJECT_SOURCE_DIR}/cmake/Embed.cmake
        DEPENDS ${file} ${PROJECT_SOURCE_DIR}/cmake/Embed.cmake
        VERBATIM)
endfunction()
