#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include "QorVisFoundation/QorGLServices.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisFoundation/QorVisPixelImage.h"
#include "QorVisFoundation/VisResourceManager.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Records every GL texture name the registry asks the platform to delete.
class DeletedTextures
{
public:
    DeletedTextures()
    {
        m_previous = QorSetGLServiceObserver([this](QorGLService service, std::uintptr_t handle) {
            if (service == QorGLService::DeleteDLTexture)
                ids.push_back(static_cast<unsigned>(handle));
        });
    }
    ~DeletedTextures() { QorSetGLServiceObserver(m_previous); }
    std::vector<unsigned> ids;

private:
    QorGLServiceObserver m_previous;
};

} // namespace

TEST(QorShaderTextureTest, SharedByNameCountedAndRetiredWhenUnused)
{
    EXPECT_EQ(QorShaderManager::AddShaderTexture(nullptr), nullptr);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("wood.png"), nullptr);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("wood.png"), nullptr) << "a look-up creates nothing";

    QorShaderTexture* first = QorShaderManager::AddShaderTexture("wood.png");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->GetRefCount(), 2u) << "one for the registry, one for the caller";
    QorShaderTexture* second = QorShaderManager::AddShaderTexture("wood.png");
    EXPECT_EQ(second, first);
    EXPECT_EQ(first->GetRefCount(), 3u);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("wood.png"), first);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("WOOD.PNG"), nullptr);
    EXPECT_STREQ(first->GetName(), "wood.png");

    DeletedTextures deleted;
    first->SetID(17);
    // Handing the same texture in twice lists it once but takes both references.
    QorShaderManager::AddShaderTextureToDestroyList(first);
    QorShaderManager::AddShaderTextureToDestroyList(second);
    EXPECT_EQ(first->GetRefCount(), 1u);
    QorShaderManager::AddShaderTextureToDestroyList(nullptr);
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_EQ(QorShaderManager::GetShaderTexture("wood.png"), nullptr);
    EXPECT_EQ(deleted.ids, std::vector<unsigned>{17});

    // A clean keeps a texture still in use.
    deleted.ids.clear();
    QorShaderTexture* kept = QorShaderManager::AddShaderTexture("kept.png");
    QorShaderTexture* again = QorShaderManager::AddShaderTexture("kept.png");
    QorShaderManager::AddShaderTextureToDestroyList(kept);
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_EQ(QorShaderManager::GetShaderTexture("kept.png"), again) << "a user still holds it";
    EXPECT_EQ(again->GetRefCount(), 2u);
    // The clean emptied the list: the texture goes only when its last user hands it in.
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_NE(QorShaderManager::GetShaderTexture("kept.png"), nullptr);
    QorShaderManager::AddShaderTextureToDestroyList(again);
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_EQ(QorShaderManager::GetShaderTexture("kept.png"), nullptr);
    EXPECT_TRUE(deleted.ids.empty()) << "ID 0 means there is no GL texture to delete";
}

TEST(QorShaderTextureTest, CopiesOwnTheirNames)
{
    QorShaderTexture original("brick.png");
    original.SetID(3);
    original.SetType(2);
    QorShaderTexture copy(original);
    EXPECT_STREQ(copy.GetName(), "brick.png");
    EXPECT_NE(copy.GetName(), original.GetName());
    EXPECT_EQ(copy.GetID(), 3u);
    QorShaderTexture assigned("other.png");
    assigned = original;
    EXPECT_STREQ(assigned.GetName(), "brick.png");
    EXPECT_EQ(assigned.GetType(), 2u);
}

TEST(QorShaderTextureTest, HostImagesAndBufferQueue)
{
    QorShaderTexture before("host.png");
    EXPECT_EQ(before.IsStoredInManager(), 0u) << "no host resource manager yet";
    EXPECT_EQ(before.SaveBufferForDrawing(), 0u);

    VisResourceManager* host = VisResourceManager::Create();
    ASSERT_NE(host, nullptr);
    host->AddPixelImage(QorTexturePixelImage::Create(QorString("host.png"), QorPixelImageFormat(4), 2, 2));
    QorShaderTexture stored("host.png");
    EXPECT_EQ(stored.IsStoredInManager(), 1u);
    EXPECT_EQ(before.IsStoredInManager(), 0u) << "fixed at construction";
    EXPECT_EQ(stored.SaveBufferForDrawing(), 0u) << "no vis image of that name";
    VisResourceManager::Destroy();
}
