# Installs the built program into a scratch prefix and builds the Debian
# package, then checks both: the files land where desktops look for them,
# the installed program runs, and the package declares what it needs.
#   cmake -DBINARY_DIR=<build> -DWORK_DIR=<scratch> -P CheckPackage.cmake
cmake_minimum_required(VERSION 3.25)

function(fail)
    string(JOIN "" message ${ARGN})
    message(FATAL_ERROR "${message}")
endfunction()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        fail("`${ARGN}` failed (${result}):\n${out}\n${err}")
    endif()
    set(run_output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

set(expected_files
    usr/bin/glimmerfold
    usr/share/applications/glimmerfold.desktop
    usr/share/icons/hicolor/scalable/apps/glimmerfold.svg
    usr/share/metainfo/invalid.glimmerfold.Glimmerfold.metainfo.xml
    usr/share/doc/glimmerfold/x11-session.html)

# cmake --install
set(root "${WORK_DIR}/root")
run(${CMAKE_COMMAND} --install "${BINARY_DIR}" --prefix "${root}/usr")
foreach(file IN LISTS expected_files)
    if(NOT EXISTS "${root}/${file}")
        fail("cmake --install did not install ${file}")
    endif()
endforeach()
run("${root}/usr/bin/glimmerfold" --version)
if(NOT run_output MATCHES "^Glimmerfold [0-9]+\\.[0-9]+")
    fail("the installed program answered --version with: ${run_output}")
endif()
file(READ "${root}/usr/share/applications/glimmerfold.desktop" entry)
foreach(line "Exec=glimmerfold" "Icon=glimmerfold" "Type=Application")
    string(FIND "${entry}" "\n${line}\n" at)
    if(at EQUAL -1)
        fail("the desktop entry lacks ${line}")
    endif()
endforeach()
find_program(APPSTREAMCLI appstreamcli)
if(APPSTREAMCLI)
    run("${APPSTREAMCLI}" validate --no-net
        "${root}/usr/share/metainfo/invalid.glimmerfold.Glimmerfold.metainfo.xml")
endif()

# cpack
run(cpack -G DEB --config "${BINARY_DIR}/CPackConfig.cmake" -B "${WORK_DIR}/package")
file(GLOB packages "${WORK_DIR}/package/*.deb")
list(LENGTH packages count)
if(NOT count EQUAL 1)
    fail("cpack made ${count} packages: ${packages}")
endif()
run(dpkg-deb --field "${packages}" Package Architecture Depends)
set(fields "${run_output}")
foreach(dependency libqt6widgets6 libqt6network6 libqt6gui6 libqt6svg6 libqt6core6 libxcb1
                   libxcb-xinput0 libxcb-xkb1 libxcb-randr0 libstdc\\+\\+6)
    if(NOT fields MATCHES "[ ,]${dependency}[ ,\n]")
        fail("the package does not depend on ${dependency}:\n${fields}")
    endif()
endforeach()
if(NOT fields MATCHES "Package: glimmerfold\n")
    fail("unexpected package name:\n${fields}")
endif()
run(dpkg-deb --contents "${packages}")
foreach(file IN LISTS expected_files)
    string(FIND "${run_output}" " ./${file}\n" at)
    if(at EQUAL -1)
        fail("the package does not contain /${file}:\n${run_output}")
    endif()
endforeach()
message(STATUS "installed tree and ${packages} are complete")
