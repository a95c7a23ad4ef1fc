// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/folderbranch.h"

#include <algorithm>
#include <utility>

namespace {

const std::string fileSystemRoot = "/";

// True when `above` is `below` or a folder that holds it; both canonical.
bool isSameOrAbove(const std::string& above, const std::string& below)
{
    if (above == fileSystemRoot)
        return true;
    return below.compare(0, above.size(), above) == 0 && (below.size() == above.size() || below[above.size()] == '/');
}

} // namespace

FolderBranch::FolderBranch(std::string root, std::string canonicalRoot)
    : m_root(std::move(root))
    , m_canonicalRoot(std::move(canonicalRoot))
{
}

FolderBranch::FolderBranch(
    const FolderBranch& parentBranch, const std::string& parent, std::string link, std::string canonicalTarget)
    : m_root(std::move(link))
    , m_canonicalRoot(std::move(canonicalTarget))
    , m_way(parentBranch.m_way)
{
    m_way.push_back({ parentBranch.m_canonicalRoot, parentBranch.canonical(parent) });
}

std::string FolderBranch::canonical(const std::string& path) const
{
    if (path == m_root)
        return m_canonicalRoot;
    // The root of all is the only folder whose path ends with a slash.
    const std::string below = path.substr(m_root == fileSystemRoot ? 0 : m_root.size());
    return m_canonicalRoot == fileSystemRoot ? below : m_canonicalRoot + below;
}

bool FolderBranch::isOnTheWay(const std::string& path) const
{
    // Only behind a link can a folder lie above itself.
    if (m_way.empty())
        return false;
    const std::string folder = canonical(path);
    return std::any_of(m_way.begin(), m_way.end(), [&folder](const Stretch& stretch) {
        return isSameOrAbove(stretch.top, folder) && isSameOrAbove(folder, stretch.bottom);
    });
}
