#include "fuzz.h"
#include "platform/profile/IniFile.h"
#include "platform/setup/SetupFile.h"

using namespace Qt::StringLiterals;

/// A setup, and a settings file that is changed: what was set is read again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray content = ContentOf(data, size);
    ReadSetupFile(content, u"/nowhere"_s);
    IniFile file(content, IniFile::EncodingOf(content));
    file.SetValue(u"Device"_s, u"Format"_s, u"7"_s);
    const QByteArray written = file.Content();
    if (IniFile(written, IniFile::EncodingOf(written)).Value(u"Device"_s, u"Format"_s) != u"7"_s)
        __builtin_trap();
    return 0;
}
