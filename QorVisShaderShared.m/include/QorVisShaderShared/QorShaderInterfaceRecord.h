/// @file
/// The values of one interface structure inside a parameter set: its members by name, in
/// the structure's order, and the list of members touched by the set's interface setters.
/// Built by the CgFX set (QorShaderParameters::BuildInterfaceRecord) and owned by whichever
/// set it is handed to (SetInterface), which may be of either implementation.
#pragma once

#include <list>
#include <utility>
#include <vector>

class QorIShaderValue;

class QorShaderInterfaceRecord
{
public:
    QorShaderInterfaceRecord() = default;
    /// Frees the member names and values; a texture member hands its registry reference
    /// back to the destroy list.
    ~QorShaderInterfaceRecord();
    QorShaderInterfaceRecord(const QorShaderInterfaceRecord&) = delete;
    QorShaderInterfaceRecord& operator=(const QorShaderInterfaceRecord&) = delete;

    /// Appends a member: keeps a _strdup copy of the name and takes ownership of the value,
    /// including the registry reference a texture value with a file holds.
    void AddMember(const char* name, QorIShaderValue* value);

    int GetMemberCount() const { return static_cast<int>(m_members.size()); }
    /// Null when the index is out of range.
    const char* GetMemberName(int member) const;
    /// Borrowed; null when the index is out of range.
    QorIShaderValue* GetMemberValue(int member) const;
    /// Position of the first member of that exact name, or -1.
    int FindMember(const char* name) const;

    /// Appends a member's value (or null for a miss) to the touched list; duplicates kept.
    void Touch(QorIShaderValue* value) { m_touched.push_back(value); }
    /// Borrowed member values in the order they were set, for whoever pushes them to Cg.
    const std::list<QorIShaderValue*>& GetTouchedMembers() const { return m_touched; }

private:
    bool IsMember(int member) const { return member >= 0 && member < GetMemberCount(); }

    std::vector<std::pair<char*, QorIShaderValue*>> m_members; // names _strdup'd, values owned
    std::list<QorIShaderValue*> m_touched;                     // borrowed from m_members
};
