# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Qt's CMake package would take its code generators from the sysroot, where they are missing or
# are programs of the device. This sets those of the building machine instead: Qt 6 has a package for
# them, and Qt 5 does not replace targets that exist already.

if(BWA_QT EQUAL 6)
    find_path(Qt6CoreTools_DIR Qt6CoreToolsConfig.cmake
        HINTS /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake/Qt6CoreTools
            /usr/lib64/cmake/Qt6CoreTools /usr/lib/cmake/Qt6CoreTools
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    return()
endif()

foreach(tool qmake moc rcc)
    find_program(BWA_HOST_${tool} ${tool} HINTS /usr/lib/qt5/bin REQUIRED)
    if(NOT TARGET Qt5::${tool})
        add_executable(Qt5::${tool} IMPORTED)
        set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION ${BWA_HOST_${tool}})
    endif()
endforeach()
