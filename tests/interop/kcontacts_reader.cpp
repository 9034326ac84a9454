// What KContacts reads in a file of vCards, as JSON.
#include <KContacts/Addressee>
#include <KContacts/VCardConverter>

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

namespace {

QJsonArray arrayOf(const QStringList& texts) { return QJsonArray::fromStringList(texts); }

QJsonArray phonesOf(const KContacts::Addressee& person)
{
    QStringList numbers;
    for (const auto& phone : person.phoneNumbers())
        numbers << phone.number();
    return arrayOf(numbers);
}

QJsonArray addressesOf(const KContacts::Addressee& person)
{
    QJsonArray all;
    for (const auto& address : person.addresses())
        all.append(arrayOf({address.postOfficeBox(), address.extended(), address.street(), address.locality(),
            address.region(), address.postalCode(), address.country()}));
    return all;
}

QJsonObject customsOf(const KContacts::Addressee& person)
{
    QJsonObject customs;
    for (const QString& custom : person.customs())
        customs.insert(custom.section(QLatin1Char(':'), 0, 0), custom.section(QLatin1Char(':'), 1));
    return customs;
}

QJsonObject cardOf(const KContacts::Addressee& person)
{
    QStringList urls;
    for (const auto& url : person.extraUrlList())
        urls << url.url().toString();
    if (!urls.contains(person.url().url().toString()))
        urls.prepend(person.url().url().toString());
    QString photo = QString::fromLatin1(person.photo().rawData().toBase64());
    return {{"name",
                arrayOf({person.familyName(), person.givenName(), person.additionalName(), person.prefix(),
                    person.suffix()})},
        {"formatted", person.formattedName()}, {"phones", phonesOf(person)},
        {"emails", arrayOf(person.emails())}, {"addresses", addressesOf(person)},
        {"birthday", person.birthday().date().toString(Qt::ISODate)}, {"title", person.title()},
        {"photo", photo}, {"nickname", person.nickName()}, {"organization", person.organization()},
        {"department", person.department()}, {"note", person.note()}, {"urls", arrayOf(urls)},
        {"categories", arrayOf(person.categories())}, {"customs", customsOf(person)}};
}

} // namespace

int main(int count, char** arguments)
{
    QFile file(QString::fromLocal8Bit(count == 2 ? arguments[1] : ""));
    if (!file.open(QIODevice::ReadOnly))
        return 2;
    QJsonArray cards;
    for (const auto& person : KContacts::VCardConverter().parseVCards(file.readAll()))
        cards.append(cardOf(person));
    QTextStream(stdout) << QJsonDocument(cards).toJson();
    return 0;
}
