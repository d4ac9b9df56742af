#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorVisFoundation/QorGLServices.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <cstring>

namespace QorShaderTextureBookkeeping {
namespace {

// The renderer makes a reloaded texture again from its file: its GL name goes, and a
// pixel image the host holds is queued for the next upload.
void Reload(const char* file)
{
    QorShaderTexture* texture = QorShaderManager::GetShaderTexture(file);
    if (!texture)
        return;
    if (texture->GetID() != 0) {
        DeleteDLTexture(texture->GetID());
        texture->SetID(0);
    }
    if (texture->IsStoredInManager())
        texture->SaveBufferForDrawing();
}

// An empty name names no texture: values without a file hold no reference.
bool Names(const char* file)
{
    return file && *file;
}

} // namespace

Outcome ChangeTexture(const char* current, const char* file, int reload, Holder holder)
{
    if (Names(current)) {
        const bool same = file && std::strcmp(current, file) == 0;
        if (reload && holder == Holder::DefaultTexture) {
            // The registered record forgets its copy of the name before the reference goes
            // back, so the hand-back can never leave it reading freed memory; without a
            // registered record there is nothing to forget or hand back.
            if (QorShaderTexture* texture = QorShaderManager::GetShaderTexture(current)) {
                texture->ForgetName();
                QorShaderManager::AddShaderTextureToDestroyList(texture);
            }
        } else if (same) {
            if (!reload)
                return Outcome::Keep;
            Reload(current);
            return Outcome::Reloaded;
        } else {
            HandBack(current);
        }
    }
    Take(file);
    return Outcome::Take;
}

void HandBack(const char* file)
{
    if (Names(file))
        QorShaderManager::AddShaderTextureToDestroyList(QorShaderManager::GetShaderTexture(file));
}

void Take(const char* file)
{
    if (Names(file))
        QorShaderManager::AddShaderTexture(file);
}

} // namespace QorShaderTextureBookkeeping
