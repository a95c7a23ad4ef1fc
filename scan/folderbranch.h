// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

/// What a walk through folders reaches through one link, or from one given path: tells how its folders are called
/// canonically, and whether a folder behind a link lies above itself, where the walk would go round for ever.
///
/// Paths are absolute, without a slash at their end, and in the encoding of the file system.
/// Owner: the places of a walk, shared. Thread: a value.
class FolderBranch final
{
public:
    /// Of a path that was given to the walk.
    FolderBranch(std::string root, std::string canonicalRoot);
    /// Of a link that was found in the folder `parent` of another branch.
    FolderBranch(
        const FolderBranch& parentBranch, const std::string& parent, std::string link, std::string canonicalTarget);

    /// Of a folder that is the root or below it without a link between them.
    std::string canonical(const std::string& path) const;
    /// Whether a folder of this branch is one of those that were gone through to reach the branch.
    bool isOnTheWay(const std::string& path) const;

private:
    // A run of folders that lie in one another without a link between them, by their canonical paths.
    struct Stretch
    {
        std::string top;
        std::string bottom;
    };

    std::string m_root;
    std::string m_canonicalRoot;
    std::vector<Stretch> m_way;
};
