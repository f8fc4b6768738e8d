#include "test_support.h"

#include <string>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

namespace {

std::string UserSid()
{
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    DWORD size = 0;
    ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::string buffer(size, '\0'), sid;
    if (size && ::GetTokenInformation(token, TokenUser, buffer.data(), size, &size)) {
        char* text = nullptr;
        if (::ConvertSidToStringSidA(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid, &text)) {
            sid = text;
            ::LocalFree(text);
        }
    }
    ::CloseHandle(token);
    return sid;
}

}  // namespace

// Every access the list allows goes to the user or to the system itself
// (LocalSystem, which can read every file, as root can on POSIX). Wine keeps
// no access lists of its own: it shows the file's POSIX mode as one (SYSTEM
// and the owner always, Everyone for "others"), and drops the "protected"
// mark, so that mark is not asked for.
bool IsPrivateFile(const wxString& path)
{
    PACL dacl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::GetNamedSecurityInfoW(path.wc_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &dacl,
                                nullptr, &descriptor) != ERROR_SUCCESS)
        return false;
    const std::string user = UserSid();
    bool ok = dacl && dacl->AceCount > 0, userAllowed = false;
    for (DWORD i = 0; ok && i < dacl->AceCount; ++i) {
        void* ace = nullptr;
        if (!::GetAce(dacl, i, &ace)) {
            ok = false;
            break;
        }
        if (static_cast<ACE_HEADER*>(ace)->AceType != ACCESS_ALLOWED_ACE_TYPE)
            continue;  // a denial narrows access
        char* sid = nullptr;
        ok = ::ConvertSidToStringSidA(&static_cast<ACCESS_ALLOWED_ACE*>(ace)->SidStart, &sid) &&
             (user == sid || std::string(sid) == "S-1-5-18");
        userAllowed = userAllowed || (sid && user == sid);
        ::LocalFree(sid);
    }
    ::LocalFree(descriptor);
    return ok && userAllowed;
}

void MakeReadableByAll(const wxString& path)
{
    const std::string sddl = "D:(A;;FA;;;" + UserSid() + ")(A;;FR;;;WD)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1, &descriptor, nullptr)) {
        ::SetFileSecurityW(path.wc_str(), DACL_SECURITY_INFORMATION, descriptor);
        ::LocalFree(descriptor);
    }
}
