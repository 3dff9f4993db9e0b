set(GLIMMERFOLD_SANITIZERS "" CACHE STRING
    "Comma-separated sanitizers for every Glimmerfold target (address,undefined or thread)")

# Adds the chosen sanitizers to a target's compile and link flags.
function(glimmerfold_use_sanitizers target)
    if(GLIMMERFOLD_SANITIZERS)
        target_compile_options(${target} PRIVATE -fsanitize=${GLIMMERFOLD_SANITIZERS}
                                                 -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${GLIMMERFOLD_SANITIZERS})
    endif()
endfunction()

# Warnings and sanitizers in one call, for every target the project defines.
function(glimmerfold_target target)
    glimmerfold_set_warnings(${target})
    glimmerfold_use_sanitizers(${target})
endfunction()
