#include "test_support.h"

#include <sys/stat.h>

bool IsPrivateFile(const wxString& path)
{
    struct stat st {};
    return ::lstat(path.fn_str(), &st) == 0 && (st.st_mode & 07777) == 0600;
}

void MakeReadableByAll(const wxString& path)
{
    ::chmod(path.fn_str(), 0644);
}
