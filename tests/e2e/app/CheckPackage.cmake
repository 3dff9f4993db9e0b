# Installs the built program into a scratch prefix and builds the Debian
# package, then checks both: the files land where desktops look for them,
# the installed program runs, the package holds the right files with the
# right modes, declares the libraries the program needs, unpacks into a
# throw-away root where the program runs, and lintian finds nothing to warn of.
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

function(require_tool variable name)
    find_program(${variable} ${name})
    if(NOT ${variable})
        fail("${name} is needed to check the package; scripts/install-deps installs it")
    endif()
endfunction()

require_tool(LINTIAN lintian)
require_tool(DESKTOP_FILE_VALIDATE desktop-file-validate)

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

set(program usr/bin/glimmerfold)
set(man_page usr/share/man/man1/glimmerfold.1.gz)
set(expected_files
    ${program}
    ${man_page}
    usr/share/applications/glimmerfold.desktop
    usr/share/icons/hicolor/scalable/apps/glimmerfold.svg
    usr/share/icons/hicolor/scalable/status/glimmerfold-tray.svg
    usr/share/metainfo/invalid.glimmerfold.Glimmerfold.metainfo.xml
    usr/share/doc/glimmerfold/x11-session.html
    usr/share/doc/glimmerfold/copyright
    usr/share/doc/glimmerfold/changelog.Debian.gz)

# The program answers --version with its name and version, in the given tree.
function(check_version_answer root)
    run("${root}/${program}" --version)
    if(NOT run_output MATCHES "^Glimmerfold [0-9]+\\.[0-9]+")
        fail("${root}/${program} answered --version with: ${run_output}")
    endif()
endfunction()

# cmake --install
set(root "${WORK_DIR}/root")
run(${CMAKE_COMMAND} --install "${BINARY_DIR}" --prefix "${root}/usr")
foreach(file IN LISTS expected_files)
    if(NOT EXISTS "${root}/${file}")
        fail("cmake --install did not install ${file}")
    endif()
endforeach()
check_version_answer("${root}")
file(READ "${root}/usr/share/applications/glimmerfold.desktop" entry)
foreach(line "Exec=glimmerfold" "Icon=glimmerfold" "Type=Application")
    string(FIND "${entry}" "\n${line}\n" at)
    if(at EQUAL -1)
        fail("the desktop entry lacks ${line}")
    endif()
endforeach()
run("${DESKTOP_FILE_VALIDATE}" "${root}/usr/share/applications/glimmerfold.desktop")
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
set(package "${packages}")

# Every entry is owned by root, directories are 0755, the program 0755 and
# everything else 0644, whatever the umask of whoever built it.
run(dpkg-deb --contents "${package}")
set(contents "${run_output}")
foreach(file IN LISTS expected_files)
    string(FIND "${contents}" " ./${file}\n" at)
    if(at EQUAL -1)
        fail("the package does not contain /${file}:\n${contents}")
    endif()
endforeach()
string(REGEX MATCHALL "[^\n]+" entries "${contents}")
foreach(entry IN LISTS entries)
    if(NOT entry MATCHES "^([-dl][-rwxsStT]+) ([^ ]+) .* \\./(.*)$")
        fail("cannot read this line of the package's contents: ${entry}")
    endif()
    set(mode "${CMAKE_MATCH_1}")
    set(owner "${CMAKE_MATCH_2}")
    set(path "${CMAKE_MATCH_3}")
    if(path MATCHES "/$")
        set(expected_mode drwxr-xr-x)
    elseif(path STREQUAL program)
        set(expected_mode -rwxr-xr-x)
    else()
        set(expected_mode -rw-r--r--)
    endif()
    if(NOT mode STREQUAL expected_mode OR NOT owner STREQUAL "root/root")
        fail("/${path} is ${mode} ${owner} in the package, not ${expected_mode} root/root")
    endif()
endforeach()

run(dpkg-deb --field "${package}" Package Depends)
set(fields "${run_output}")
if(NOT fields MATCHES "Package: glimmerfold\n")
    fail("unexpected package name:\n${fields}")
endif()

# A throw-away root: the packaged program runs from it and its man page
# documents every option the program itself lists in --help.
set(unpacked "${WORK_DIR}/unpacked")
run(dpkg-deb --extract "${package}" "${unpacked}")
check_version_answer("${unpacked}")
run("${unpacked}/${program}" --help)
string(REGEX MATCHALL "--[a-z][-a-z]*" options "${run_output}")
list(REMOVE_DUPLICATES options)
run(gzip -dc "${unpacked}/${man_page}")
string(REPLACE "\\-" "-" manual "${run_output}")
foreach(option IN LISTS options)
    string(FIND "${manual}" "${option}" at)
    if(at EQUAL -1)
        fail("the man page does not document ${option}, which --help lists")
    endif()
endforeach()

# Depends names the package of every library the program links to (the
# toolkit's SVG plugins are loaded at run time, so they are named as well).
run(objdump -p "${unpacked}/${program}")
string(REGEX MATCHALL "NEEDED +[^\n]+" needed "${run_output}")
run(ldd "${unpacked}/${program}")
set(resolved "${run_output}")
set(dependencies libqt6svg6)
foreach(entry IN LISTS needed)
    string(REGEX REPLACE "NEEDED +" "" library "${entry}")
    string(REGEX REPLACE "([.+])" "\\\\\\1" library_pattern "${library}")
    if(NOT resolved MATCHES "\t${library_pattern} => ([^ ]+)")
        fail("ldd cannot find ${library}:\n${resolved}")
    endif()
    # dpkg knows each library under one of the two names a merged /usr gives it.
    set(path "${CMAKE_MATCH_1}")
    string(REGEX REPLACE "^/usr/" "/" short_path "${path}")
    execute_process(COMMAND dpkg-query --search "${path}" "/usr${short_path}" "${short_path}"
                    OUTPUT_VARIABLE owners ERROR_QUIET)
    if(NOT owners MATCHES "^([^:,\n]+)")
        fail("no installed package holds ${path}")
    endif()
    list(APPEND dependencies "${CMAKE_MATCH_1}")
endforeach()
list(REMOVE_DUPLICATES dependencies)
foreach(dependency IN LISTS dependencies)
    string(REGEX REPLACE "([.+])" "\\\\\\1" dependency_pattern "${dependency}")
    if(NOT fields MATCHES "[ ,]${dependency_pattern}[ ,\n]")
        fail("the package does not depend on ${dependency}:\n${fields}")
    endif()
endforeach()

# lintian's verdict: information may remain, errors and warnings may not.
execute_process(COMMAND "${LINTIAN}" --fail-on none --display-info "${package}"
                RESULT_VARIABLE result OUTPUT_VARIABLE verdict ERROR_VARIABLE lintian_errors)
if(NOT result EQUAL 0)
    fail("lintian could not check the package (${result}):\n${verdict}\n${lintian_errors}")
endif()
string(REGEX MATCHALL "\n[EW]: [^\n]+" complaints "\n${verdict}")
if(complaints)
    string(REPLACE ";" "" complaints "${complaints}")
    fail("lintian finds errors or warnings in the package:${complaints}")
endif()
if(verdict)
    message(STATUS "lintian's remaining notes:\n${verdict}")
endif()
message(STATUS "installed tree and ${package} are complete; lintian has no errors or warnings")
