#include "base/Error.h"
#include "base/Platform.h"
#include "cli/Cli.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <ostream>
#include <streambuf>

using namespace Corvadine;

namespace {

// Drops Qt's own warnings about bad files, because we print errors for them.
void DropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

// Writes to a C stream, which does the buffering. Keeps errno of the first failure, because std::ostream does
// not keep it.
class TFileBuffer : public std::streambuf {
public:
    explicit TFileBuffer(std::FILE* file) : FFile(file) { }

    int ErrorNumber() const { return FErrorNumber; } // errno of the first failure, or 0

protected:
    int_type overflow(int_type character) override
    {
        const int written = std::fputc(character, FFile);
        Note(written != EOF);
        return written;
    }
    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        const auto bytes = static_cast<std::size_t>(size);
        const std::size_t written = std::fwrite(text, 1, bytes, FFile);
        Note(written == bytes);
        return static_cast<std::streamsize>(written);
    }
    int sync() override
    {
        const int failed = std::fflush(FFile);
        Note(failed == 0);
        return failed;
    }

private:
    void Note(bool succeeded)
    {
        if (!succeeded && FErrorNumber == 0)
            FErrorNumber = errno;
    }

    std::FILE* FFile;
    int FErrorNumber = 0;
};

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(DropMessage);
    PrepareProcess();
    const QCoreApplication application(argc, argv);
    const bool showsProgress = ErrorStreamIsTerminal();
    std::FILE* const taken = TakeErrorStream();
    TFileBuffer errorBuffer(taken ? taken : stderr);
    std::ostream err(&errorBuffer);
    TFileBuffer outBuffer(stdout);
    std::ostream out(&outBuffer);

    const int status = RunCli(QCoreApplication::arguments().mid(1),
        { out, err, QCoreApplication::applicationDirPath(), showsProgress });
    if (out.flush())
        return status;
    err << "Cannot write the standard output: "
        << SystemErrorText({ outBuffer.ErrorNumber(), std::generic_category() }).toStdString() << std::endl;
    return status == 0 ? 1 : status;
}
