option(GLIMMERFOLD_WERROR "Treat compiler warnings as errors" OFF)

# Applied per target so that third-party and generated code keeps its own flags.
function(glimmerfold_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    if(GLIMMERFOLD_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
