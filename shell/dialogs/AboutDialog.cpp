// The about box over extras/AboutInfo.
#include "shell/dialogs/AboutDialog.h"

#include "extras/AboutInfo.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tg::shell {

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("AboutDialog"));
    setWindowTitle(QStringLiteral("About Tonegrabber"));
    auto* heading =
        new QLabel(QStringLiteral("<h2>Tonegrabber 6</h2><p>Version %1<br>%2</p>"
                                  "<p>Samples a MIDI sound source key by key and exports sampler "
                                  "instruments.</p>")
                       .arg(QString::fromStdString(programVersion()),
                            QString::fromStdString(buildDescription()).toHtmlEscaped()),
                   this);
    heading->setObjectName(QStringLiteral("version"));
    heading->setTextInteractionFlags(Qt::TextSelectableByMouse);

    const std::vector<LibraryInfo> used = usedLibraries();
    libraries_ = new QTableWidget(int(used.size()), 4, this);
    libraries_->setObjectName(QStringLiteral("libraries"));
    libraries_->setHorizontalHeaderLabels({QStringLiteral("Library"), QStringLiteral("Version"),
                                           QStringLiteral("Licence"), QStringLiteral("Used for")});
    libraries_->verticalHeader()->hide();
    libraries_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    libraries_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    libraries_->horizontalHeader()->setStretchLastSection(true);
    for (int row = 0; row < int(used.size()); ++row) {
        const LibraryInfo& library = used[size_t(row)];
        int column = 0;
        for (const std::string* text :
             {&library.name, &library.version, &library.licence, &library.use})
            libraries_->setItem(row, column++, new QTableWidgetItem(QString::fromStdString(*text)));
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(libraries_, 1);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(560, 400);
}

} // namespace tg::shell
