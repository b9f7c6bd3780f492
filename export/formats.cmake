# The template exporters (Bitwig, Deluge, Prophet-X, Quantum), the zip layer and the Korg writer:
# part of tg_export, since its pipeline renders for them and its runner dispatches to them.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)

target_sources(tg_export PRIVATE
    templates/BitwigExporter.cpp templates/BitwigExporter.h
    templates/DelugeExporter.cpp templates/DelugeExporter.h
    templates/ExportChecks.cpp templates/ExportChecks.h
    templates/ProphetXExporter.cpp templates/ProphetXExporter.h
    templates/QuantumExporter.cpp templates/QuantumExporter.h
    templates/RenderedSample.h
    templates/TemplateExporter.cpp templates/TemplateExporter.h
    templates/TemplateText.cpp templates/TemplateText.h
    templates/TemporaryFolder.cpp templates/TemporaryFolder.h
    zip/ZipArchive.cpp zip/ZipArchive.h
    zip/ZipFileOutput.cpp zip/ZipFileOutput.h
    korg/BigEndian.h
    korg/KorgFiles.cpp korg/KorgFiles.h
    korg/KorgKronos.cpp korg/KorgKronos.h
    korg/KorgNames.cpp korg/KorgNames.h)
target_link_libraries(tg_export PRIVATE PkgConfig::LIBZIP)

tg_add_tests(tg_export_formats_tests
    SOURCES
        korg/tests/KorgKronosTest.cpp
        templates/tests/BitwigExporterTest.cpp
        templates/tests/CardExportersTest.cpp
        templates/tests/ExportChecksTest.cpp
        templates/tests/TemplateTextTest.cpp
        tests/SyntheticProject.cpp tests/SyntheticProject.h
        zip/tests/ZipArchiveTest.cpp
    LIBS tg_export)
