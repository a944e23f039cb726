#include "dialogs/WidgetPrompts.h"

#include "base/PathRules.h"
#include "dialogs/AddProjFrm.h"
#include "dialogs/ImageDlgFrm.h"

#include <QMessageBox>

namespace Corvadine {

namespace {

QMessageBox::StandardButton Ask(QMessageBox::Icon icon, const QString& title, QString text,
    QMessageBox::StandardButtons buttons, QWidget* window)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")); // a label would show the CR
    QMessageBox box(icon, title, text, buttons, window);
    box.setTextFormat(Qt::PlainText);
    if (buttons.testFlag(QMessageBox::No))
        box.setDefaultButton(QMessageBox::No); // what is asked about cannot be undone
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

void ShowErrorOver(QWidget* window, const QString& text)
{
    Ask(QMessageBox::Critical, QStringLiteral("Error"), text, QMessageBox::Ok, window);
}

} // namespace

void TWidgetPrompts::ShowError(const QString& text)
{
    ShowErrorOver(FWindow, text);
}

void TWidgetPrompts::Inform(const QString& text)
{
    Ask(QMessageBox::Information, QStringLiteral("Information"), text, QMessageBox::Ok, FWindow);
}

bool TWidgetPrompts::Confirm(const QString& text)
{
    const auto buttons = QMessageBox::Yes | QMessageBox::No;
    return Ask(QMessageBox::Question, QStringLiteral("Confirm"), text, buttons, FWindow) == QMessageBox::Yes;
}

std::optional<QString> TWidgetPrompts::ChooseProjectFile()
{
    TAddProjForm form(FWindow, FProjectFolder);
    QObject::connect(&form, &TAddProjForm::Refused, &form,
        [&form](const QString& reason) { ShowErrorOver(&form, reason); });
    if (Run(form) != QDialog::Accepted)
        return std::nullopt;
    FProjectFolder = FolderOf(form.ProjectFile());
    return form.ProjectFile();
}

std::optional<QString> TWidgetPrompts::ChooseImage(const QString& startFolder)
{
    TImageDlgForm form(FWindow, startFolder);
    if (Run(form) != QDialog::Accepted)
        return std::nullopt;
    return form.SelectedFile;
}

// Blocks the window, but not the help that the dialog may open.
int TWidgetPrompts::Run(QDialog& form) const
{
    AnswerHelpKey(form, FHelp);
    form.setWindowModality(Qt::WindowModal);
    return form.exec();
}

} // namespace Corvadine
