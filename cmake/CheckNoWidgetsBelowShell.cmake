# Fails when a source file below the shell includes a Qt Widgets header, or when a library
# below the shell links Qt5::Widgets: the core, the file formats, the analysis, the export,
# the devices, the recording and the command line work without a display.
# Run as: cmake -DSOURCE_DIR=<repository root> -P CheckNoWidgetsBelowShell.cmake
set(widget_headers
    "QtWidgets" "QWidget" "QApplication" "QDialog" "QMainWindow" "QMessageBox" "QLabel"
    "QPushButton" "QDockWidget" "QMenu" "QAction" "QFileDialog" "QSplashScreen" "QStyle"
    "QLayout" "QBoxLayout" "QLineEdit" "QComboBox" "QSpinBox" "QCheckBox" "QListWidget"
    "QTableWidget" "QTreeWidget" "QGraphicsView" "QAbstractButton" "QToolButton" "QSlider")
list(JOIN widget_headers "|" alternatives)
set(include_pattern "#[ \t]*include[ \t]*[<\"](QtWidgets/)?(${alternatives})[>\"/.]")

set(offenders "")
foreach(folder core audiofile analysis export devices recording cli)
    file(GLOB_RECURSE sources "${SOURCE_DIR}/${folder}/*.h" "${SOURCE_DIR}/${folder}/*.cpp"
         "${SOURCE_DIR}/${folder}/*.hpp" "${SOURCE_DIR}/${folder}/*.cc")
    foreach(source ${sources})
        file(STRINGS "${source}" hits REGEX "${include_pattern}")
        if(hits)
            list(APPEND offenders "${source}: ${hits}")
        endif()
    endforeach()
    if(EXISTS "${SOURCE_DIR}/${folder}/CMakeLists.txt")
        file(READ "${SOURCE_DIR}/${folder}/CMakeLists.txt" listfile)
        if(listfile MATCHES "Qt5::Widgets|Qt5Widgets|COMPONENTS[^)]*Widgets")
            list(APPEND offenders "${folder}/CMakeLists.txt links Qt Widgets")
        endif()
    endif()
endforeach()

if(offenders)
    list(JOIN offenders "\n  " listing)
    message(FATAL_ERROR "Qt Widgets used below the shell:\n  ${listing}")
endif()
message(STATUS "no Qt Widgets below the shell")
