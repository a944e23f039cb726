#include "base/Error.h"
#include "fuzz/Fuzzing.h"
#include "support/help/ChmArchive.h"
#include "support/help/HelpContents.h"

using namespace Corvadine;

// Compiled help: a file is either refused with a text, or its topics, home page and contents can be read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString file = Fuzzing::FileWith(u"help.chm"_s, Fuzzing::BytesOf(data, size));
    try {
        const TChmArchive archive(file);
        constexpr quint32 MostTopics = 20; // more topics only cost time
        for (quint32 number = 0; number < MostTopics; ++number)
            archive.Read(archive.TopicPage(number));
        archive.Read(archive.HomePage());
        int level = -1;
        for (const THelpEntry& entry :
            ParseHelpContents(archive.Read(archive.ContentsFile()).value_or(QByteArray()))) {
            Fuzzing::Require(entry.Level >= 0 && entry.Level <= level + 1);
            level = entry.Level;
        }
    } catch (const TError& error) {
        Fuzzing::Require(error.Text().contains(file));
    }
    return 0;
}
