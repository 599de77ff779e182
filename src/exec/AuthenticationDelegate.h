#pragma once

class AdminAuthentication;

// Receives the privileged session's four notifications. The application installs none;
// tests do.
class AuthenticationDelegate {
public:
    virtual ~AuthenticationDelegate() = default;
    virtual void authenticationDidAuthorize(AdminAuthentication *) {}
    virtual void authenticationDidDeauthorize(AdminAuthentication *) {}
    virtual void authenticationDidExecute(AdminAuthentication *) {}
    virtual void authenticationFailedExecute(AdminAuthentication *) {}
};
