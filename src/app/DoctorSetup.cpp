#include "DoctorSetup.h"

#include "sandbox/SandboxOwners.h"

#include <memory>

KextDoctor::Options DoctorSetup::options(const SystemPaths &paths, const QString &volume,
                                         const QString &extraVersion) {
    KextDoctor::Options options;
    options.volumeRoot = paths.volumeRoot(volume);
    options.extraVersion = extraVersion;
    if (paths.isSandbox() && SandboxOwners::kept(paths.root())) {
        const auto owners = std::make_shared<SandboxOwners>(paths.root());
        options.owner = [owners](const QString &path, BundleWalk::Owner) {
            const SandboxOwners::Owner owner = owners->owner(path);
            return BundleWalk::Owner{owner.first, owner.second};
        };
    }
    return options;
}
