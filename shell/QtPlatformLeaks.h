// Include in exactly one file of each program that runs Qt's GUI under the leak checker: Qt's
// platform plugins keep their screens and fonts until the process ends, which the leak
// checker reports as leaks of ours.
#pragma once

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\n"
           "leak:libqxcb.so\n"
           "leak:libQt5XcbQpa.so\n"
           "leak:libfontconfig.so\n"
           "leak:libdbus-1.so\n"
           "leak:libjack.so\n";
}
