# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Qt's CMake package would take its code generators from the sysroot, where they are missing or
# made for the device. It leaves alone those that are there already: the building machine's.

foreach(tool qmake moc rcc)
    find_program(BWA_HOST_${tool} ${tool} HINTS /usr/lib/qt5/bin REQUIRED)
    if(NOT TARGET Qt5::${tool})
        add_executable(Qt5::${tool} IMPORTED)
        set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION ${BWA_HOST_${tool}})
    endif()
endforeach()
