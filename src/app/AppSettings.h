#pragma once

#include <QString>

// The program's settings: booleans and addresses in the Info.plist of the Contents
// folder. Reads never fail (a missing key or file reads as "no"); a write rewrites the
// whole file so that keys we don't know are kept.
class AppSettings {
public:
    static constexpr const char *checkAtStartupKey = "SUCheckAtStartup";
    static constexpr const char *prelinkKernelKey = "Prelink Kernel";
    static constexpr const char *lionCacheKey = "Manually recreate Lion cache";
    static constexpr const char *feedUrlKey = "SUFeedURL";
    static constexpr const char *donationUrlKey = "KKDonationURL";

    explicit AppSettings(const QString &contentsDir);

    // On first start outside an application bundle the per-user folder is empty: give
    // it the defaults that ship with the program. An existing file is left alone.
    void seedDefaults() const;

    bool boolean(const char *key) const;
    QString string(const char *key) const;
    // Sets one boolean and writes the file back; false when it could not be read or
    // written (callers ignore it: the menu's check mark is what the tasks read).
    bool store(const char *key, bool value) const;

    QString infoPlist() const { return m_infoPlist; }

private:
    QString m_contentsDir;
    QString m_infoPlist;
};
