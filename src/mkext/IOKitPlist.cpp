#include "mkext/IOKitPlist.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cstdlib>
#include <map>

namespace {

qsizetype countNodes(plist_t node) {
    qsizetype count = 1;
    const plist_type type = plist_get_node_type(node);
    if (type == PLIST_ARRAY) {
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
            count += countNodes(plist_array_get_item(node, i));
    } else if (type == PLIST_DICT) {
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        while (true) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &key, &value);
            free(key);
            if (!value)
                break;
            count += countNodes(value);
        }
        free(iter);
    }
    return count;
}

class Parser {
public:
    Parser(const QByteArray &xml, const IOKitPlist::Limits &limits)
        : m_reader(xml), m_limits(limits) {}

    PlistPtr run() {
        if (!nextElement())
            return nullptr;
        // Tolerate a regular wrapper around the object.
        if (m_reader.name() == QLatin1String("plist") && !nextElement())
            return nullptr;
        return object(0);
    }

private:
    // Advances to the next start element; false at an end element, the end or an error.
    bool nextElement() {
        while (!m_reader.atEnd()) {
            switch (m_reader.readNext()) {
            case QXmlStreamReader::StartElement:
                return true;
            case QXmlStreamReader::DTD:
                // A plain doctype line is fine; declared entities are not expanded.
                if (!m_reader.entityDeclarations().isEmpty())
                    return false;
                break;
            case QXmlStreamReader::EndElement:
            case QXmlStreamReader::Invalid:
            case QXmlStreamReader::EntityReference:
                return false;
            case QXmlStreamReader::Characters:
                if (!m_reader.isWhitespace())
                    return false;
                break;
            default:
                break;
            }
        }
        return false;
    }

    bool spend(qsizetype nodes) {
        m_nodes += nodes;
        return m_nodes <= m_limits.maxNodes;
    }

    // The text of a leaf element, leaving the reader at its end element.
    std::optional<QString> text() {
        const QString value = m_reader.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
        if (m_reader.hasError())
            return std::nullopt;
        return value;
    }

    PlistPtr object(int depth) {
        if (depth > m_limits.maxDepth || !spend(1))
            return nullptr;
        const QXmlStreamAttributes attributes = m_reader.attributes();
        if (attributes.hasAttribute(QLatin1String("IDREF"))) {
            const auto found = m_shared.find(attributes.value(QLatin1String("IDREF")).toString());
            if (found == m_shared.end() || !spend(found->second.second) || !text())
                return nullptr;
            return PlistPtr(plist_copy(found->second.first.get()));
        }
        PlistPtr node = value(depth);
        if (node && attributes.hasAttribute(QLatin1String("ID"))) {
            const qsizetype size = countNodes(node.get());
            m_shared[attributes.value(QLatin1String("ID")).toString()] = {
                PlistPtr(plist_copy(node.get())), size};
        }
        return node;
    }

    PlistPtr value(int depth) {
        const QStringView name = m_reader.name();
        if (name == QLatin1String("dict"))
            return dictionary(depth);
        if (name == QLatin1String("array") || name == QLatin1String("set"))
            return array(depth);
        const QString tag = name.toString();
        const std::optional<QString> content = text();
        if (!content)
            return nullptr;
        if (tag == QLatin1String("string"))
            return PlistPtr(plist_new_string(content->toUtf8().constData()));
        if (tag == QLatin1String("integer"))
            return integer(*content);
        if (tag == QLatin1String("true") || tag == QLatin1String("false"))
            return PlistPtr(plist_new_bool(tag == QLatin1String("true")));
        if (tag == QLatin1String("real")) {
            bool ok = false;
            const double number = content->trimmed().toDouble(&ok);
            return ok ? PlistPtr(plist_new_real(number)) : nullptr;
        }
        if (tag == QLatin1String("date"))
            return PlistPtr(plist_new_string(content->toUtf8().constData()));
        if (tag == QLatin1String("data")) {
            const auto decoded = QByteArray::fromBase64Encoding(
                content->toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded)
                return nullptr;
            return PlistPtr(
                plist_new_data(decoded.decoded.constData(), uint64_t(decoded.decoded.size())));
        }
        return nullptr;
    }

    static PlistPtr integer(const QString &content) {
        const QByteArray digits = content.trimmed().toLatin1();
        const bool negative = digits.startsWith('-');
        bool ok = false;
        const qulonglong magnitude = (negative ? digits.mid(1) : digits).toULongLong(&ok, 0);
        if (!ok)
            return nullptr;
        return PlistPtr(plist_new_uint(negative ? 0 - magnitude : magnitude));
    }

    PlistPtr dictionary(int depth) {
        PlistPtr dict(plist_new_dict());
        while (nextElement()) {
            if (m_reader.name() != QLatin1String("key"))
                return nullptr;
            const std::optional<QString> key = text();
            if (!key || !nextElement())
                return nullptr;
            PlistPtr item = object(depth + 1);
            if (!item)
                return nullptr;
            plist_dict_set_item(dict.get(), key->toUtf8().constData(), item.release());
        }
        return closed(std::move(dict));
    }

    PlistPtr array(int depth) {
        PlistPtr list(plist_new_array());
        while (nextElement()) {
            PlistPtr item = object(depth + 1);
            if (!item)
                return nullptr;
            plist_array_append_item(list.get(), item.release());
        }
        return closed(std::move(list));
    }

    // nextElement() stopped: fine only at the container's own end element.
    PlistPtr closed(PlistPtr container) {
        if (m_reader.hasError() || !m_reader.isEndElement())
            return nullptr;
        return container;
    }

    QXmlStreamReader m_reader;
    IOKitPlist::Limits m_limits;
    qsizetype m_nodes = 0;
    std::map<QString, std::pair<PlistPtr, qsizetype>> m_shared;
};

void writeNode(QXmlStreamWriter &writer, plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_DICT: {
        writer.writeStartElement(QStringLiteral("dict"));
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        while (true) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &key, &value);
            if (!value) {
                free(key);
                break;
            }
            writer.writeTextElement(QStringLiteral("key"), QString::fromUtf8(key));
            free(key);
            writeNode(writer, value);
        }
        free(iter);
        writer.writeEndElement();
        break;
    }
    case PLIST_ARRAY:
        writer.writeStartElement(QStringLiteral("array"));
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
            writeNode(writer, plist_array_get_item(node, i));
        writer.writeEndElement();
        break;
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        writer.writeEmptyElement(value ? QStringLiteral("true") : QStringLiteral("false"));
        break;
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        writer.writeStartElement(QStringLiteral("integer"));
        writer.writeAttribute(QStringLiteral("size"), QStringLiteral("64"));
        writer.writeCharacters(QStringLiteral("0x") + QString::number(value, 16));
        writer.writeEndElement();
        break;
    }
    case PLIST_DATA: {
        char *bytes = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &bytes, &length);
        writer.writeTextElement(
            QStringLiteral("data"),
            QString::fromLatin1(QByteArray(bytes, qsizetype(length)).toBase64()));
        free(bytes);
        break;
    }
    case PLIST_REAL: {
        // The kernel's dialect has no real numbers; keep the value readable as text.
        double value = 0;
        plist_get_real_val(node, &value);
        writer.writeTextElement(QStringLiteral("string"), QString::number(value, 'g', 17));
        break;
    }
    case PLIST_DATE: {
        int32_t seconds = 0;
        int32_t micro = 0;
        plist_get_date_val(node, &seconds, &micro);
        // libplist counts from 2001-01-01, as Apple's dates do.
        writer.writeTextElement(QStringLiteral("string"), QString::number(seconds));
        break;
    }
    default: {
        char *value = nullptr;
        if (plist_get_node_type(node) == PLIST_STRING)
            plist_get_string_val(node, &value);
        else if (plist_get_node_type(node) == PLIST_KEY)
            plist_get_key_val(node, &value);
        writer.writeTextElement(QStringLiteral("string"), QString::fromUtf8(value ? value : ""));
        free(value);
        break;
    }
    }
}

} // namespace

PlistPtr IOKitPlist::parse(const QByteArray &xml) {
    return parse(xml, Limits{});
}

PlistPtr IOKitPlist::parse(const QByteArray &xml, const Limits &limits) {
    // The archive ends its text with a NUL, which is not XML.
    qsizetype length = xml.size();
    while (length > 0 && xml.at(length - 1) == '\0')
        --length;
    if (xml.left(length).contains('\0'))
        return nullptr;
    return Parser(xml.left(length), limits).run();
}

QByteArray IOKitPlist::serialize(plist_t node) {
    QByteArray text;
    QXmlStreamWriter writer(&text);
    writeNode(writer, node);
    // An empty element such as <true/> is only closed by what follows it, so a lone
    // boolean needs the end of the document to be complete.
    writer.writeEndDocument();
    return text;
}
