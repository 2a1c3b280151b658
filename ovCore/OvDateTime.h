// A date with the time of day.
#pragma once

#include "ovCore/OvObject.h"
#include "OvPlatform.h"

#include <string>

/// A point in time in the platform's common date representation, to the second. A plain value; no time zone is kept.
class COvDateTime : public COvObject
{
public:
    /// The form for people. For Format.
    static constexpr wchar_t DISPLAY_FORM[] = L"%m/%d/%Y  %H:%M:%S";

    /// The form for documents; the milliseconds are always zeros. For Format.
    static constexpr wchar_t DOCUMENT_FORM[] = L"%Y-%m-%dT%H:%M:%S.000";

    /// No date: formats as an empty text.
    COvDateTime() = default;

    /// The time without its milliseconds. A day or time that the calendar does not have, or a year above 9999, gives an
    /// invalid value, which formats as an empty text.
    explicit COvDateTime(const SYSTEMTIME& time);

    /// The current time in UTC.
    static COvDateTime Now();

    /// The value as the C library's wcsftime writes it, in the C library's locale.
    /// @return an empty text for an invalid value or none, for one before the year 100, later than midnight of
    ///         31 December 9999, and for one that comes to more than 127 characters.
    std::wstring Format(const wchar_t* format) const;

    /// The item "DateTime", or szName, with the display form.
    COvEvidence GetEvidence(const wchar_t* szName = nullptr) const override;

private:
    enum Status : LONG
    {
        STATUS_VALID = 0,
        STATUS_INVALID = 1,
        STATUS_NULL = 2
    };

    double m_dValue = 0.0; // days since 30 December 1899; the fraction is the time of day, away from zero
    LONG m_nStatus = STATUS_NULL;
};
