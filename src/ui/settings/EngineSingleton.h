// An object that each QML engine has one of, found through the engine: a QML singleton, or what Qt Quick
// items share. Owned by whoever installs it, and outlives the engine; main thread only.
#pragma once

#include <QQmlEngine>
#include <QVariant>

namespace orvo {

template <typename Type>
class EngineSingleton {
 public:
  // Null without an engine, or before it was installed there.
  static Type* of(const QQmlEngine* engine) {
    return engine == nullptr ? nullptr : engine->property(Type::staticMetaObject.className()).template value<Type*>();
  }

  void installIn(QQmlEngine& engine) {
    auto* const self = static_cast<Type*>(this);
    QJSEngine::setObjectOwnership(self, QJSEngine::CppOwnership);
    engine.setProperty(Type::staticMetaObject.className(), QVariant::fromValue(self));
  }

  // Called by QML.
  static Type* create(QQmlEngine* engine, QJSEngine*) { return of(engine); }
};

}  // namespace orvo
