#include "base/FileAccessPosix.h"

#include "base/Error.h"

#include <QList>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <vector>

namespace Corvadine {

namespace {

// The name under which Linux keeps a file's access control list.
constexpr const char* AccessControlList = "system.posix_acl_access";

TError WriteError(const QString& path, const QString& reason)
{
    return { TErrorKind::Io, u"write"_s, path, reason };
}

QString LastError()
{
    return SystemErrorText({ errno, std::system_category() });
}

struct TAttribute {
    QByteArray Name;
    QByteArray Value;

    bool operator==(const TAttribute&) const = default;
};

// Returns what `call` writes into a buffer. With a null buffer, `call` returns the number of bytes that it
// would write. Returns nothing, with errno set, if `call` fails.
template <typename TCall> std::optional<QByteArray> Filled(TCall call)
{
    for (;;) { // the size may grow between the two calls
        const ssize_t size = call(nullptr, 0);
        if (size < 0)
            return std::nullopt;
        QByteArray buffer(size, Qt::Uninitialized);
        const ssize_t filled = size == 0 ? 0 : call(buffer.data(), static_cast<std::size_t>(size));
        if (filled >= 0)
            return buffer.first(filled);
        if (errno != ERANGE)
            return std::nullopt;
    }
}

std::optional<QByteArray> ValueOf(int descriptor, const QByteArray& name)
{
    return Filled([&](char* buffer, std::size_t size) {
        return ::fgetxattr(descriptor, name.constData(), buffer, size);
    });
}

// Returns the extended attributes of a file that can be read. Returns none if the file system has
// no attributes.
std::vector<TAttribute> AttributesOf(const QByteArray& file)
{
    std::vector<TAttribute> attributes;
    const auto names =
        Filled([&](char* buffer, std::size_t size) { return ::listxattr(file.constData(), buffer, size); });
    for (const QByteArray& name : names.value_or(QByteArray()).split('\0')) {
        const auto value = Filled([&](char* buffer, std::size_t size) {
            return ::getxattr(file.constData(), name.constData(), buffer, size);
        });
        if (value && !name.isEmpty())
            attributes.push_back({ name, *value });
    }
    return attributes;
}

bool Has(const std::vector<TAttribute>& attributes, const char* name)
{
    return std::any_of(attributes.cbegin(), attributes.cend(),
        [name](const TAttribute& attribute) { return attribute.Name == name; });
}

// Gives the file an attribute. Does nothing if the attribute has this value already, because some attributes
// can be set only by the system. Returns false if the attribute cannot be set.
bool Set(int descriptor, const TAttribute& attribute)
{
    return ValueOf(descriptor, attribute.Name) == attribute.Value
        || ::fsetxattr(descriptor, attribute.Name.constData(), attribute.Value.constData(),
               static_cast<std::size_t>(attribute.Value.size()), 0)
        == 0;
}

// Removes the access control list that a new file may inherit from its folder. Returns false if this fails.
bool DropInheritedList(int descriptor)
{
    return !ValueOf(descriptor, AccessControlList) || ::fremovexattr(descriptor, AccessControlList) == 0;
}

// Gives the file to the owner and the group of `status`, or to the group alone if the system refuses the
// owner. Returns false if the system refuses the group, too.
bool GiveToGroup(int descriptor, const struct stat& status)
{
    constexpr auto SameOwner = static_cast<uid_t>(-1);
    return ::fchown(descriptor, status.st_uid, status.st_gid) == 0
        || ::fchown(descriptor, SameOwner, status.st_gid) == 0;
}

// Returns `mode`, reduced for a file that cannot get the group of its original. The file's own group gets
// only the access that all users have, because the original did not belong to this group.
mode_t WithoutGroup(mode_t mode)
{
    return (mode & ~mode_t { S_IRWXG }) | (mode & S_IRWXO) << 3;
}

} // namespace

void KeepAccess(int descriptor, const QByteArray& target, const QString& path)
{
    struct stat status { };
    if (::stat(target.constData(), &status) != 0)
        return;
    const std::vector<TAttribute> attributes = AttributesOf(target);
    const bool hasList = Has(attributes, AccessControlList);
    const bool hasGroup = GiveToGroup(descriptor, status);
    if (hasList && !hasGroup)
        throw WriteError(path, u"its access control list names a group that the new file cannot have"_s);
    if (!hasList && !DropInheritedList(descriptor))
        throw WriteError(path, LastError());
    const mode_t mode = status.st_mode & 07777;
    if (::fchmod(descriptor, hasGroup ? mode : WithoutGroup(mode)) != 0)
        throw WriteError(path, LastError());
    // The access control list is one of these attributes. It agrees with the mode of `target`, so setting it
    // does not change the mode again.
    for (const TAttribute& attribute : attributes)
        if (!Set(descriptor, attribute))
            throw WriteError(path,
                u"its extended attribute %1 cannot be kept: %2"_s.arg(
                    QString::fromUtf8(attribute.Name), LastError()));
}

void CopyAccess(int descriptor, const QByteArray& original, const QString& path)
{
    mode_t mode = S_IRUSR;
    std::vector<TAttribute> attributes;
    bool hasGroup = false;
    struct stat status { };
    if (::stat(original.constData(), &status) == 0) {
        attributes = AttributesOf(original);
        hasGroup = GiveToGroup(descriptor, status);
        mode = status.st_mode & 0777;
    }
    const bool hasList = Has(attributes, AccessControlList);
    // If a file has an access control list, the group's bits in its mode hold the mask of the list. The mask
    // may allow more than the list gives to the group.
    if (hasList)
        mode &= ~mode_t { S_IRWXG };
    else if (!hasGroup)
        mode = WithoutGroup(mode);
    if (!DropInheritedList(descriptor) || ::fchmod(descriptor, mode) != 0)
        throw WriteError(path, LastError());
    for (const TAttribute& attribute : attributes)
        if (attribute.Name != AccessControlList || hasGroup)
            Set(descriptor, attribute); // may fail: not every file system has such attributes
    // Setting the list has set the group's bits to the mask of the list, so the mode is read again.
    if (::fstat(descriptor, &status) != 0 || ::fchmod(descriptor, (status.st_mode & 0777) | S_IWUSR) != 0)
        throw WriteError(path, LastError());
}

} // namespace Corvadine
