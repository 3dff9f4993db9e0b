#include "ui/RunningAppsPicker.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/ApplicationIconImage.h"
#include "ui/ApplicationRow.h"
#include "ui/IgnoreListEdits.h"
#include "ui/TextStyle.h"

namespace gf {

RunningAppsPicker::RunningAppsPicker(Settings& settings, ApplicationRegistry& applications,
                                     QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      candidates_(ignoreCandidates(applications.runningApplications())),
      heading_(std::make_unique<QLabel>(QStringLiteral("Select Application to Ignore"))),
      cancel_(std::make_unique<QPushButton>(QStringLiteral("Cancel"))) {
    setWindowTitle(QStringLiteral("Select Application to Ignore"));
    setWindowModality(Qt::WindowModal);
    applyTextStyle(*heading_, TextStyle::headline);

    auto layout = std::make_unique<QVBoxLayout>();
    layout->setSpacing(12);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(heading_.get(), 0, Qt::AlignHCenter);
    layout->addWidget(makeList().release(), 0, Qt::AlignHCenter);
    layout->addWidget(cancel_.get(), 0, Qt::AlignHCenter);
    setLayout(layout.release());

    cancel_->setAutoDefault(false);
    connect(cancel_.get(), &QPushButton::clicked, this, &QDialog::reject);
}

RunningAppsPicker::~RunningAppsPicker() = default;

QString RunningAppsPicker::displayNameOf(const RunningApplication& application) {
    if (application.displayName.has_value() && !application.displayName->empty()) {
        return QString::fromStdString(*application.displayName);
    }
    return QStringLiteral("Unknown");
}

std::unique_ptr<QWidget> RunningAppsPicker::makeList() {
    auto rows = std::make_unique<QWidget>();
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (std::size_t i = 0; i < candidates_.size(); ++i) {
        const RunningApplication& application = candidates_[i];
        auto button = std::make_unique<QPushButton>();
        button->setFlat(true);
        button->setAutoDefault(false);
        button->setAccessibleName(displayNameOf(application));
        auto content = std::make_unique<QHBoxLayout>();
        content->setContentsMargins(0, 0, 0, 0);
        content->addWidget(
            std::make_unique<ApplicationRow>(
                pixmapOf(application.icon, ApplicationRow::iconSize, devicePixelRatioF()),
                displayNameOf(application),
                QString::fromStdString(application.identifier.value_or(std::string())))
                .release());
        button->setLayout(content.release());
        button->setMinimumHeight(ApplicationRow::iconSize + 10);
        connect(button.get(), &QPushButton::clicked, this, [this, i] { choose(i); });
        rowButtons_.push_back(button.get());
        layout->addWidget(button.release());
    }
    layout->addStretch(1);
    rows->setLayout(layout.release());

    auto list = std::make_unique<QScrollArea>();
    list->setFixedSize(listWidth, listHeight);
    list->setWidgetResizable(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setWidget(rows.release());
    return list;
}

// Whatever was chosen, the sheet closes; an application already ignored leaves the list as is.
void RunningAppsPicker::choose(std::size_t index) {
    const std::vector<IgnoreListEntry> current = settings_.ignoreList();
    std::vector<IgnoreListEntry> changed = addingToIgnoreList(current, candidates_.at(index));
    if (changed != current) {
        settings_.setIgnoreList(changed);
    }
    accept();
}

}  // namespace gf
