#include "plist/PlistPrecheck.h"

#include <cstring>
#include <vector>

namespace {

// The offset of `token` at or after `from`, or -1.
qsizetype find(const QByteArray &bytes, qsizetype from, const char *token) {
    return bytes.indexOf(token, from);
}

quint64 bigEndian(const uchar *p, int size) {
    quint64 value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | p[i];
    return value;
}

// One object of a binary list: the object references it holds (none for scalars).
struct Children {
    bool ok = true;
    quint64 first = 0; // offset of the first reference
    quint64 count = 0; // number of references
};

class BinaryList {
public:
    explicit BinaryList(const QByteArray &bytes)
        : m_data(reinterpret_cast<const uchar *>(bytes.constData())),
          m_size(quint64(bytes.size())) {}

    bool readTrailer() {
        if (m_size < 8 + 32 || std::memcmp(m_data, "bplist00", 8) != 0)
            return false;
        const uchar *trailer = m_data + m_size - 32;
        m_offsetSize = trailer[6];
        m_refSize = trailer[7];
        m_count = bigEndian(trailer + 8, 8);
        m_top = bigEndian(trailer + 16, 8);
        m_table = bigEndian(trailer + 24, 8);
        return m_offsetSize >= 1 && m_offsetSize <= 8 && m_refSize >= 1 && m_refSize <= 8 &&
               m_count > 0 && m_top < m_count && m_table < m_size - 32 &&
               m_count <= (m_size - 32 - m_table) / m_offsetSize;
    }

    quint64 count() const { return m_count; }
    quint64 top() const { return m_top; }

    Children children(quint64 object) const {
        const quint64 at = bigEndian(m_data + m_table + object * m_offsetSize, m_offsetSize);
        if (at >= m_table)
            return {false};
        const uchar marker = m_data[at];
        const int type = marker >> 4;
        const bool text = type == 0x5 || type == 0x6; // ASCII, UTF-16
        if (type != 0xA && type != 0xC && type != 0xD && !text)
            return {};
        quint64 length = marker & 0x0f;
        quint64 first = at + 1;
        if (length == 0x0f) { // the length follows as an integer object
            if (first >= m_table || (m_data[first] >> 4) != 0x1)
                return {false};
            const int size = 1 << (m_data[first] & 0x0f);
            if (size > 8 || first + 1 + size > m_table)
                return {false};
            length = bigEndian(m_data + first + 1, size);
            first += 1 + size;
        }
        if (text)
            return {!holdsNul(first, length, type == 0x6 ? 2 : 1)};
        const quint64 refs = type == 0xD ? length * 2 : length;
        if (length > m_table || refs > (m_table - first) / m_refSize)
            return {false};
        return {true, first, refs};
    }

    // A string of `length` units of `unit` bytes with an all-zero unit, or one that does
    // not fit before the offset table.
    bool holdsNul(quint64 first, quint64 length, int unit) const {
        if (length > (m_table - first) / unit)
            return true;
        for (quint64 i = 0; i < length; ++i) {
            const uchar *p = m_data + first + i * unit;
            if (p[0] == 0 && (unit == 1 || p[1] == 0))
                return true;
        }
        return false;
    }

    quint64 reference(const Children &children, quint64 index) const {
        return bigEndian(m_data + children.first + index * m_refSize, m_refSize);
    }

private:
    const uchar *m_data;
    quint64 m_size;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_count = 0;
    quint64 m_top = 0;
    quint64 m_table = 0;
};

} // namespace

QString PlistPrecheck::problem(const QByteArray &bytes) {
    if (bytes.startsWith("bplist"))
        return binaryWithin(bytes)
                   ? QString()
                   : QStringLiteral("is not a binary property list that can be read safely");
    // libplist turns down "&#0;" itself, but takes a NUL byte into the string.
    if (bytes.contains('\0'))
        return QStringLiteral("holds a NUL character");
    return xmlWithin(bytes) ? QString() : QStringLiteral("is nested too deeply");
}

bool PlistPrecheck::xmlWithin(const QByteArray &bytes) {
    int depth = 0;
    qsizetype at = 0;
    while ((at = bytes.indexOf('<', at)) >= 0) {
        const QByteArray rest =
            QByteArray::fromRawData(bytes.constData() + at, qMin<qsizetype>(bytes.size() - at, 9));
        qsizetype end;
        if (rest.startsWith("<!--")) {
            end = find(bytes, at + 4, "-->");
        } else if (rest.startsWith("<![CDATA[")) {
            end = find(bytes, at + 9, "]]>");
        } else if (rest.startsWith("<?") || rest.startsWith("<!")) {
            end = bytes.indexOf('>', at);
        } else if (rest.startsWith("</")) {
            --depth;
            end = bytes.indexOf('>', at);
        } else {
            // An element's start tag; a quoted attribute value may hold '>'.
            char quote = 0;
            for (end = at + 1; end < bytes.size(); ++end) {
                const char c = bytes[end];
                if (quote) {
                    quote = c == quote ? 0 : quote;
                } else if (c == '"' || c == '\'') {
                    quote = c;
                } else if (c == '>') {
                    break;
                }
            }
            if (end >= bytes.size())
                return true; // unfinished: libplist turns it down without going deeper
            if (bytes[end - 1] != '/' && ++depth > maxDepth)
                return false;
        }
        if (end < 0)
            return true;
        at = end + 1;
    }
    return true;
}

bool PlistPrecheck::binaryWithin(const QByteArray &bytes) {
    BinaryList list(bytes);
    if (!list.readTrailer())
        return false;
    // Depth-first over the object graph with our own stack. An object's height and its
    // size once every shared child is copied out are known when its last child is done;
    // a child still open on the stack is a cycle. Depth is counted as in XML, where
    // <plist> holds the top object.
    enum State : uchar { New, Open, Done };
    struct Measure {
        int height = 1;
        qint64 nodes = 1;
        void add(const Measure &child) {
            height = qMax(height, child.height + 1);
            nodes = qMin(maxNodes + 1, nodes + child.nodes);
        }
    };
    struct Frame {
        quint64 object;
        Children children;
        quint64 next = 0;
        Measure measure;
    };
    std::vector<State> state(list.count(), New);
    std::vector<Measure> measures(list.count());
    std::vector<Frame> stack;
    const auto open = [&](quint64 object) {
        const Children children = list.children(object);
        if (!children.ok || int(stack.size()) + 1 >= maxDepth)
            return false;
        state[object] = Open;
        stack.push_back({object, children, 0, {}});
        return true;
    };
    if (!open(list.top()))
        return false;
    Measure top;
    while (!stack.empty()) {
        Frame &frame = stack.back();
        if (frame.next == frame.children.count) {
            state[frame.object] = Done;
            const Measure done = measures[frame.object] = frame.measure;
            stack.pop_back();
            (stack.empty() ? top : stack.back().measure).add(done);
            continue;
        }
        const quint64 child = list.reference(frame.children, frame.next++);
        if (child >= list.count() || state[child] == Open)
            return false;
        if (state[child] == Done)
            frame.measure.add(measures[child]);
        else if (!open(child))
            return false;
    }
    // `top` holds the top object as its one child, standing for <plist>.
    return top.height <= maxDepth && top.nodes <= maxNodes;
}
