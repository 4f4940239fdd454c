#include <orvane/language.h>

#include <dlfcn.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace {

const QString english = QStringLiteral("en");
const QString beginning = QStringLiteral("orvane_");
const QString ending = QStringLiteral(".qm");

// Found from where this library itself lies, so that a tree can be moved.
QString folderOfCatalogues()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void *>(&folderOfCatalogues), &info) == 0 ||
        info.dli_fname == nullptr) {
        return {};
    }
    const QFileInfo library(QFile::decodeName(info.dli_fname));
    return QDir::cleanPath(library.absolutePath() + "/" ORVANE_LIB_TO_TRANSLATIONS);
}

// Takes the place of what was loaded under the same name before; it goes with the application.
bool load(const QString &name, const QString &folder)
{
    QCoreApplication &application = *QCoreApplication::instance();
    const QString kind = "orvane/" + name.section('_', 0, 0);
    delete application.findChild<QTranslator *>(kind);
    auto *translator = new QTranslator(&application);
    translator->setObjectName(kind);
    if (!translator->load(name + ending, folder)) {
        delete translator;
        return false;
    }
    return QCoreApplication::installTranslator(translator);
}

} // namespace

QStringList OvLanguage::known()
{
    QStringList codes;
    for (const QString &file :
         QDir(folderOfCatalogues()).entryList({beginning + "*" + ending}, QDir::Files, QDir::Name)) {
        codes.append(file.mid(beginning.size()).chopped(ending.size()));
    }
    codes.removeAll(english);
    codes.prepend(english);
    return codes;
}

QString OvLanguage::forWish(const QString &wish)
{
    const QStringList codes = known();
    QString code = wish.section('.', 0, 0).section('@', 0, 0).replace('-', '_');
    for (; !code.isEmpty(); code.truncate(qMax(0, code.lastIndexOf('_')))) {
        for (const QString &candidate : codes) {
            if (candidate.compare(code, Qt::CaseInsensitive) == 0) {
                return candidate;
            }
        }
    }
    return {};
}

QString OvLanguage::ofEnvironment()
{
    for (const QString &wish : QLocale::system().uiLanguages()) {
        const QString code = forWish(wish);
        if (!code.isEmpty()) {
            return code;
        }
    }
    return english;
}

bool OvLanguage::use(const QString &code)
{
    load("qtbase_" + code, QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    return load(beginning + code, folderOfCatalogues()) || code == english;
}
