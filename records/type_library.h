// Identity of the engine's type library: the fixed identifiers of its classes, interfaces and
// types.
#pragma once

#include <string_view>

namespace veltara::typelib {

inline constexpr std::string_view kName = "Veltaraengine";
inline constexpr std::string_view kHelpString = "Veltara Calculation Engine";
inline constexpr int kVersionMajor = 1;
inline constexpr int kVersionMinor = 0;
inline constexpr int kLocale = 0x409;

inline constexpr std::string_view kLibrary = "180C2F01-2C6C-4F58-BEA1-24628812153B";
inline constexpr std::string_view k_cVeltara = "AC41C187-EFEF-4C70-B08D-333DED64664B";
inline constexpr std::string_view k_cVeltaraInterface = "96304856-F8C7-47EF-B377-A6F5627D9AA3";
inline constexpr std::string_view k_cOrbitalCol = "5BE6A235-53DC-4BFC-BF59-B13FCCF120BE";
inline constexpr std::string_view k_cOrbitalColInterface = "F57A59E3-B48C-467B-A436-7D25810BBED3";
inline constexpr std::string_view k_cMemoryDCEx = "CAF4FD2F-45C6-4E07-87E5-4A995DE23800";
inline constexpr std::string_view k_cMemoryDCExInterface = "91AEB5D4-FD26-4633-AA91-02D731E35A4D";
inline constexpr std::string_view kRenderMode = "68673639-FCD6-4C1B-BEC0-1B1A7A87FBD4";
inline constexpr std::string_view kRenderSize = "C9ED6E02-A4C2-4FF7-8A98-ED5D13481335";
inline constexpr std::string_view kTransectDirection = "B2C1B394-CEFE-404C-9CCB-65DE84E49490";
inline constexpr std::string_view kOrbitalType = "9D8A8429-E61F-4A5F-8056-360134A7F410";
inline constexpr std::string_view kViewMode = "5C24E1CA-6E82-411C-B88A-6AB7A44C4100";
inline constexpr std::string_view kOptFactor = "9F92A104-452D-42E3-AC15-CBEBD7997C4E";
inline constexpr std::string_view kOrbitalStats = "C2CF917A-BA47-4C65-AFDF-E93398D427CE";
inline constexpr std::string_view kRenderDCinfo = "472E8770-CD0D-4141-963C-A8E591E04DF1";
inline constexpr std::string_view kRenderRequest = "E7CA7608-3654-4CBF-88B7-6C702B9C8F3C";
inline constexpr std::string_view kOrbitalSetup = "8A99130D-824A-492C-8E18-7A438BAEE1BD";
inline constexpr std::string_view kOrbInfo = "2C4692F8-EFDB-441A-8D2F-BFF5848843D4";
inline constexpr std::string_view kCOORDdouble = "50D1C20A-4A65-4D35-9176-CABB55A9B0A2";
inline constexpr std::string_view kCOORDdoubleParams = "7226B8A8-828E-40E2-86EC-9FABC2A150C7";
inline constexpr std::string_view kCOORDlong = "1D432107-DE4A-45B3-9481-CBCDF680E7E0";
inline constexpr std::string_view kPointArray = "D9160CB2-17ED-4897-8A06-4F5C25E2A90B";
inline constexpr std::string_view kRGBA = "4DBFCE09-86AE-4167-80D0-F95456564700";

}  // namespace veltara::typelib
