#pragma once

#include <QString>

#include <any>
#include <functional>
#include <memory>

/// Components behind a contract are made by name, as a fresh object for each use, or stand ready as one shared service
/// of the process. Both kinds are filled in by `main.cpp`, and refilled by a test.
///
/// A service that is asked for before it was installed is a bug, not a fault.

namespace components {
void Register(const QString& name, const std::any& maker);
/// An empty any when nothing is registered under the name.
std::any Find(const QString& name);
[[noreturn]] void ThrowMissing(const QString& name);
} // namespace components

/// Registers how the component called `name` is made; an earlier entry of that name is replaced.
template <class Contract>
void RegisterComponent(const QString& name, std::function<std::unique_ptr<Contract>()> make)
{
    components::Register(name, std::any(std::move(make)));
}

/// Makes the component called `name`.
/// Throws PlatformError when no such component is registered, or when it was registered under another contract.
template <class Contract>
std::unique_ptr<Contract> CreateObject(const QString& name)
{
    const std::any maker = components::Find(name);
    const auto* make = std::any_cast<std::function<std::unique_ptr<Contract>()>>(&maker);
    if (make == nullptr)
        components::ThrowMissing(name);
    return (*make)();
}

template <class Service>
std::unique_ptr<Service>& ServiceSlot()
{
    static std::unique_ptr<Service> slot;
    return slot;
}

/// Installs the one service of its kind, and hands back the one that stood there before.
template <class Service>
std::unique_ptr<Service> InstallService(std::unique_ptr<Service> service)
{
    std::swap(ServiceSlot<Service>(), service);
    return service;
}

template <class Service>
Service& UseService()
{
    Q_ASSERT(ServiceSlot<Service>() != nullptr);
    return *ServiceSlot<Service>();
}
