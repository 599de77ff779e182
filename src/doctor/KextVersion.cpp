#include "doctor/KextVersion.h"

namespace {

// Reads up to `maxDigits` digits at `at`; -1 when there are none or too many.
int number(const QString &text, qsizetype &at, int maxDigits) {
    const qsizetype start = at;
    int value = 0;
    while (at < text.size() && text.at(at).isDigit() && text.at(at).unicode() < 128) {
        value = value * 10 + (text.at(at).unicode() - '0');
        ++at;
    }
    const qsizetype digits = at - start;
    return digits == 0 || digits > maxDigits ? -1 : value;
}

} // namespace

std::optional<KextVersion> KextVersion::parse(const QString &text) {
    KextVersion version;
    qsizetype at = 0;
    version.m_major = number(text, at, 4);
    if (version.m_major < 0)
        return std::nullopt;
    int *parts[] = {&version.m_minor, &version.m_revision};
    for (int *part : parts) {
        if (at >= text.size() || text.at(at) != QLatin1Char('.'))
            break;
        ++at;
        *part = number(text, at, 2);
        if (*part < 0)
            return std::nullopt;
    }
    if (at == text.size()) {
        version.m_stage = 4;
        return version;
    }
    static const struct {
        const char *prefix;
        int stage;
    } stages[] = {{"fc", 3}, {"d", 0}, {"a", 1}, {"b", 2}};
    for (const auto &stage : stages) {
        const QLatin1String prefix(stage.prefix);
        if (!text.mid(at).startsWith(prefix))
            continue;
        at += prefix.size();
        version.m_stage = stage.stage;
        version.m_level = number(text, at, 3);
        if (version.m_level < 0 || version.m_level > 255 || at != text.size())
            return std::nullopt;
        return version;
    }
    return std::nullopt;
}
