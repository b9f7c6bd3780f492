# The further sampler formats: Decent Sampler, NN-XT, Montage, OP-1, Volca Sample, the shared XML and
# file-name helpers, and the runner rows that connect them to the export menu.
target_sources(tg_export PRIVATE
    FurtherFormatsRunner.cpp FurtherFormatsRunner.h
    UnavailableFormats.cpp UnavailableFormats.h
    decent/DecentPreset.cpp decent/DecentPreset.h
    decent/DecentSamplerExport.cpp decent/DecentSamplerExport.h
    montage/MontageExport.cpp montage/MontageExport.h
    montage/YsfcLibrary.cpp montage/YsfcLibrary.h
    nnxt/NnxtExport.cpp nnxt/NnxtExport.h
    nnxt/NnxtPatch.cpp nnxt/NnxtPatch.h
    op1/Op1DrumKit.cpp op1/Op1DrumKit.h
    op1/Op1Export.cpp op1/Op1Export.h
    volca/VolcaExport.cpp volca/VolcaExport.h
    volca/VolcaStream.cpp volca/VolcaStream.h
    xml/XmlText.cpp xml/XmlText.h)

if(TG_BUILD_TESTS)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)
endif()

tg_add_tests(tg_export_further_tests
    SOURCES
        decent/tests/DecentSamplerExportTest.cpp
        nnxt/tests/NnxtExportTest.cpp
        tests/FurtherFormatsMenuTest.cpp
        tests/InterruptedExportTest.cpp
        montage/tests/MontageExportTest.cpp
        op1/tests/Op1ExportTest.cpp
        volca/tests/VolcaExportTest.cpp
        tests/FurtherFormatsFixture.cpp tests/FurtherFormatsFixture.h
        tests/SyntheticProject.cpp tests/SyntheticProject.h
    LIBS tg_export PkgConfig::SNDFILE)
