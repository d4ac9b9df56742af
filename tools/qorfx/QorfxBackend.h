/// @file
/// What qorfx does with a material that depends on its effect implementation: listing
/// techniques and what the effect binds, preparing the GL context, feeding matrices,
/// lights and the environment, and drawing each pass. One back end per implementation;
/// the rest of the tool speaks to the shader object and this interface only.
#pragma once

#include "QorfxIncludes.h"
#include "QorfxScene.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <memory>
#include <string>

class QorIShader;

/// Where and how a material is drawn.
struct QorfxView
{
    Qor4x4Matrix world, view, projection;
    /// r,g,b of a colour environment; empty for the sky cube map.
    std::vector<float> environment;
};

class QorfxBackend
{
public:
    virtual ~QorfxBackend() = default;

    /// Techniques as [{index, name, valid}]; "valid" is null unless `validate`, which
    /// needs a GL context made current and prepared with PrepareContext().
    virtual nlohmann::json Techniques(bool validate) = 0;
    /// Adds what the effect says of user parameter `index` (from 1) beyond the shader's
    /// values: "widget" and "uiName", and what else the implementation knows of it.
    virtual void DescribeParameter(int index, nlohmann::json& entry) = 0;
    /// Adds the effect-wide entries: bound "semantics", "interfaces", "environment",
    /// "lights", "hasLightArray", and what else the implementation reports.
    virtual void DescribeEffect(nlohmann::json& description) = 0;
    /// The errors of the last failed compilation, as the implementation reports them.
    virtual std::string CompileErrors() = 0;
    /// The includes the last compilation could not find.
    virtual std::vector<QorfxMissingInclude> MissingIncludes() = 0;

    /// Sets up the current GL context the way drawing needs it. Inspecting and drawing
    /// both call it, so that a technique that validates can be drawn.
    virtual void PrepareContext() = 0;
    /// Selects the environment; an empty string, or why it cannot be had.
    virtual std::string SetEnvironment(const QorfxView& view, unsigned int skyTexture) = 0;
    /// Validates the current technique, moving on to the first that validates; false
    /// when none runs on this GL driver.
    virtual bool Validate() = 0;
    /// Feeds matrices, lights and the shader's values, and draws `mesh` with every pass
    /// of the validated technique into the current framebuffer.
    virtual void Draw(const QorfxView& view, const std::vector<QorfxVertex>& mesh) = 0;
};

/// Runs `load` (which gives the shader its effect and generates its parameters; its
/// outcome goes to `loaded`) the way the shader's implementation needs, then returns the
/// back end of that implementation over the effect: null when the shader has no effect
/// or the tool has no back end for its implementation.
std::unique_ptr<QorfxBackend> QorfxMakeBackend(QorIShader& shader, const std::function<bool()>& load, bool& loaded);
