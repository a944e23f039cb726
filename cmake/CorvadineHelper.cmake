# Packs the update helper, and embeds it in executables.

find_program(GCAB gcab REQUIRED)

set(helper_folder ${PROJECT_BINARY_DIR}/support/helper)
set(helper_name upd${CMAKE_EXECUTABLE_SUFFIX})

# Adds the target that packs the program upd into a cabinet. The time of the packed file is fixed, so that the same
# helper gives the same cabinet.
function(corvadine_make_helper_cabinet)
    add_custom_command(OUTPUT ${helper_folder}/UPD
        COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:upd> ${helper_folder}/${helper_name}
        COMMAND ${CMAKE_STRIP} ${helper_folder}/${helper_name}
        COMMAND touch -d 1980-01-01T00:00:00Z ${helper_folder}/${helper_name}
        COMMAND ${CMAKE_COMMAND} -E env TZ=UTC
            ${GCAB} --create --zip --nopath ${helper_folder}/UPD ${helper_folder}/${helper_name}
        DEPENDS upd
        COMMENT "Packing the update helper"
        VERBATIM)
    add_custom_target(helper_cabinet DEPENDS ${helper_folder}/UPD)
endfunction()

# Embeds the cabinet in an executable as the resource UPD. support/update/ExecutableResource.h finds the resource.
function(corvadine_embed_helper target)
    add_dependencies(${target} helper_cabinet)
    if(WIN32)
        file(GENERATE OUTPUT ${helper_folder}/${target}.rc CONTENT "UPD RCDATA \"${helper_folder}/UPD\"\n")
        target_sources(${target} PRIVATE ${helper_folder}/${target}.rc)
        set_source_files_properties(${helper_folder}/${target}.rc PROPERTIES
            GENERATED ON OBJECT_DEPENDS ${helper_folder}/UPD)
    else()
        set_source_files_properties(${helper_folder}/UPD PROPERTIES GENERATED ON)
        qt_add_resources(${target} ${target}_helper PREFIX / BASE ${helper_folder} FILES ${helper_folder}/UPD)
    endif()
endfunction()
