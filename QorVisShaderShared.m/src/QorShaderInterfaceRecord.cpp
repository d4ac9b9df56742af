#include "QorVisShaderShared/QorShaderInterfaceRecord.h"

#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorVisShaders/QorIShaderValue.h"
#include "QorVisShaders/QorShaderValueType.h"

#include "QorSystem/QorStrings.h"

#include <cstdlib>
#include <cstring>

QorShaderInterfaceRecord::~QorShaderInterfaceRecord()
{
    m_touched.clear();
    for (auto& member : m_members) {
        int type = 0;
        if (member.second)
            member.second->GetType(&type);
        if (type == QorValueTexture) {
            char* file = nullptr;
            member.second->Get(&file);
            QorShaderTextureBookkeeping::HandBack(file);
        }
        delete member.second;
        std::free(member.first);
    }
}

void QorShaderInterfaceRecord::AddMember(const char* name, QorIShaderValue* value)
{
    m_members.emplace_back(name ? _strdup(name) : nullptr, value);
}

const char* QorShaderInterfaceRecord::GetMemberName(int member) const
{
    return IsMember(member) ? m_members[static_cast<size_t>(member)].first : nullptr;
}

QorIShaderValue* QorShaderInterfaceRecord::GetMemberValue(int member) const
{
    return IsMember(member) ? m_members[static_cast<size_t>(member)].second : nullptr;
}

int QorShaderInterfaceRecord::FindMember(const char* name) const
{
    if (!name)
        return -1;
    for (size_t i = 0; i < m_members.size(); ++i)
        if (m_members[i].first && std::strcmp(m_members[i].first, name) == 0)
            return static_cast<int>(i);
    return -1;
}
