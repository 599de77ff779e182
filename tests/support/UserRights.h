#pragma once

#include <unistd.h>
#ifdef __linux__
#include <linux/capability.h>
#include <sys/syscall.h>
#endif

// While it lives, this thread reads and writes files with a user's rights, even when the
// tests run as root (as CI does): root's overrides of file modes are dropped from the
// thread's effective capabilities and given back at the end. The tools a task starts
// get root's full rights again, as root commands do. `works()` is false where neither
// is possible (root on a system without Linux capabilities).
class UserRights {
public:
    UserRights() {
        if (::geteuid() != 0)
            return;
#ifdef __linux__
        m_header.version = _LINUX_CAPABILITY_VERSION_3;
        if (::syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct lowered[2] = {m_saved[0], m_saved[1]};
        lowered[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
        m_lowered = ::syscall(SYS_capset, &m_header, lowered) == 0;
#endif
    }
    ~UserRights() {
#ifdef __linux__
        if (m_lowered)
            ::syscall(SYS_capset, &m_header, m_saved);
#endif
    }
    bool works() const {
        return ::geteuid() != 0 || m_lowered;
    }

private:
    bool m_lowered = false;
#ifdef __linux__
    __user_cap_header_struct m_header{};
    __user_cap_data_struct m_saved[2]{};
#endif
};
