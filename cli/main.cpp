#include "base/Platform.h"
#include "cli/Cli.h"

#include <QCoreApplication>

#include <iostream>

using namespace Corvadine;

namespace {

// The error stream is for our own lines: whatever Qt and the image decoders below it have to say about a bad
// file comes back to us as an error anyway.
void DropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(DropMessage);
    PrepareProcess();
    const QCoreApplication application(argc, argv);
    std::ios::sync_with_stdio(false);

    const int status = RunCli(QCoreApplication::arguments().mid(1),
        { std::cout, std::cerr, QCoreApplication::applicationDirPath(), ErrorStreamIsTerminal() });
    if (std::cout.flush())
        return status;
    std::cerr << "Cannot write the standard output: the system refused\n";
    return status == 0 ? 1 : status;
}
