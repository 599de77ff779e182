#pragma once

#include <QString>
#include <compare>
#include <optional>

// A bundle version as the kernel reads CFBundleVersion and OSBundleCompatibleVersion:
// "MAJOR[.MINOR[.REVISION]][STAGE LEVEL]", major up to four digits, minor and revision up
// to two, stage "d", "a", "b" or "fc" with up to three digits of level; a version with
// no stage is a release and sorts after all of its pre-releases.
class KextVersion {
public:
    // Absent for anything the kernel would refuse as a version.
    static std::optional<KextVersion> parse(const QString &text);

    auto operator<=>(const KextVersion &other) const = default;

private:
    int m_major = 0;
    int m_minor = 0;
    int m_revision = 0;
    int m_stage = 0; // development < alpha < beta < candidate < release
    int m_level = 0;
};
