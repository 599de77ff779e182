#pragma once

class KextFolders;

// On 10.7 the system's startup mkext can be rebuilt by hand, from S/L/E, with the same
// command as the boot loader's mkext.
namespace LionCache {

// The volume's "ProductVersion" starts with "10.7": its point releases are Lion, while
// "10.10" and later are not. A missing or unreadable version file, or a version too
// short to tell, is not Lion.
bool volumeIsLion(const KextFolders &folders);

} // namespace LionCache
