#include "base/Platform.h"
#include "cli/Cli.h"

#include <QCoreApplication>

#include <cstdio>
#include <iostream>
#include <streambuf>

using namespace Corvadine;

namespace {

// Qt's own warnings about a bad file; it comes back to us as an error anyway.
void DropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

// Writes to a C stream, which does the buffering.
class TFileBuffer : public std::streambuf {
public:
    explicit TFileBuffer(std::FILE* file) : FFile(file) { }

protected:
    int_type overflow(int_type character) override { return std::fputc(character, FFile); }
    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        return static_cast<std::streamsize>(std::fwrite(text, 1, static_cast<std::size_t>(size), FFile));
    }
    int sync() override { return std::fflush(FFile); }

private:
    std::FILE* FFile;
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
    std::ios::sync_with_stdio(false);

    const int status = RunCli(QCoreApplication::arguments().mid(1),
        { std::cout, err, QCoreApplication::applicationDirPath(), showsProgress });
    if (std::cout.flush())
        return status;
    err << "Cannot write the standard output: the system refused" << std::endl;
    return status == 0 ? 1 : status;
}
