/// @file
/// Shader objects of the framework's newer effect path are made by the host, not by the
/// shader library: the host registers a factory and the library asks for objects through it.
#pragma once

class QorIShader;

using QorQRFX0Factory = QorIShader* (*)();

/// Registers the host's factory (null removes it) and returns the previous one.
QorQRFX0Factory QorRegisterQRFX0Factory(QorQRFX0Factory factory);

/// A new shader object from the registered factory, owned by the caller; null without one.
QorIShader* CreateQRFX0Effect();
