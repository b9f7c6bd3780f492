// Fuzzes what the program makes of outside text: the update server's answer, and the key and
// layer read from a sample file's name.
#include "extras/FileNameKeys.h"
#include "extras/UpdateCheck.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const tg::UpdateCheckResult result = tg::evaluateUpdateDocument(
        QByteArray(reinterpret_cast<const char*>(data), int(size)), QStringLiteral("6.0.0"));
    if (result.message.isEmpty())
        __builtin_trap();
    const std::string name(reinterpret_cast<const char*>(data), size);
    const int key = tg::keyFromFileName(name);
    const int layer = tg::layerFromFileName(name);
    if (key < -1 || key > 127 || layer < -1 || layer > 999)
        __builtin_trap();
    return 0;
}
