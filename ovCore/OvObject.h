// The common base of the core's objects that can describe themselves.
#pragma once

#include "ovCore/OvEvidence.h"

#include <string>

/// Base without data. The order of the virtual operations is fixed.
class COvObject
{
public:
    COvObject() = default;
    COvObject(const COvObject&) = default;
    COvObject(COvObject&&) = default;
    COvObject& operator=(const COvObject&) = default;
    COvObject& operator=(COvObject&&) = default;
    virtual ~COvObject() = default;

    /// A narrow text about the object; empty unless a class says otherwise.
    virtual std::string Describe() const { return std::string(); }

    /// An evidence item that describes the object.
    /// @param szName  the item's name for the classes that use one; null for their own name.
    virtual COvEvidence GetEvidence(const wchar_t* szName = nullptr) const = 0;
};
