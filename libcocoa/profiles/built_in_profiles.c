// libcocoa/profiles/built_in_profiles.c - the profiles that the library makes itself: the same bytes in every
// run.
#include "libcocoa/profiles/built_in_profiles.h"

#include <stdbool.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/profiles/little_cms.h"

static const cmsCIExyY kD65 = {0.3127, 0.3290, 1.0};
// Adobe RGB (1998), from its published encoding.
static const cmsCIExyYTRIPLE kAdobePrimaries = {{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
static const double kAdobeGamma = 563.0 / 256.0;
// The generic RGB space of the desktop platform: P22 phosphors, gamma 1.8. Whoever wants generic colours to
// be sRGB changes these two and nothing else.
static const cmsCIExyYTRIPLE kGenericPrimaries = {
    {0.630, 0.340, 1.0}, {0.295, 0.605, 1.0}, {0.155, 0.077, 1.0}};
static const double kGenericGamma = 1.8;

static cmsHPROFILE MakeRGB(cmsContext context, const cmsCIExyYTRIPLE* primaries, double gamma) {
  cmsToneCurve* curve = cmsBuildGamma(context, gamma);
  if (!curve) return NULL;
  cmsToneCurve* curves[] = {curve, curve, curve};
  cmsHPROFILE profile = cmsCreateRGBProfileTHR(context, &kD65, primaries, curves);
  cmsFreeToneCurve(curve);
  return profile;
}

static cmsHPROFILE MakeGray(cmsContext context, double gamma) {
  cmsToneCurve* curve = cmsBuildGamma(context, gamma);
  if (!curve) return NULL;
  cmsHPROFILE profile = cmsCreateGrayProfileTHR(context, cmsD50_xyY(), curve);
  cmsFreeToneCurve(curve);
  return profile;
}

static bool SetDescription(cmsContext context, cmsHPROFILE profile, const char* text) {
  cmsMLU* description = cmsMLUalloc(context, 1);
  if (!description) return false;
  bool done = cmsMLUsetASCII(description, "en", "US", text) &&
              cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
  cmsMLUfree(description);
  return done;
}

// Only the date in the header would differ from run to run.
static void SetDate(unsigned char* bytes) {
  static const unsigned char newYear2009[12] = {0x07, 0xD9, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
  memcpy(bytes + 24, newYear2009, sizeof newYear2009);
}

// The profile of a kind, without its description, which goes to `*description`.
static cmsHPROFILE Make(cmsContext context, QVXBuiltIn which, const char** description) {
  switch (which) {
    case QVXBuiltInSRGB:
      *description = "sRGB IEC61966-2.1";
      return cmsCreate_sRGBProfileTHR(context);
    case QVXBuiltInAdobeRGB:
      *description = "Adobe RGB (1998)";
      return MakeRGB(context, &kAdobePrimaries, kAdobeGamma);
    case QVXBuiltInGenericRGB:
      *description = "Generic RGB Profile";
      return MakeRGB(context, &kGenericPrimaries, kGenericGamma);
    case QVXBuiltInGenericGray:
      *description = "Generic Gray Profile";
      return MakeGray(context, kGenericGamma);
    case QVXBuiltInGamma22Gray:
      *description = "Generic Gray Gamma 2.2 Profile";
      return MakeGray(context, 2.2);
    default:
      return NULL;
  }
}

void* QVXMakeBuiltIn(QVXBuiltIn which, size_t* size) {
  cmsContext context = QVXLittleCMS();
  const char* description = NULL;
  cmsHPROFILE profile = Make(context, which, &description);
  if (!profile) return NULL;
  unsigned char* bytes = NULL;
  cmsUInt32Number needed = 0;
  if (SetDescription(context, profile, description) && cmsSaveProfileToMem(profile, NULL, &needed))
    bytes = malloc(needed);
  bool saved = bytes && cmsSaveProfileToMem(profile, bytes, &needed);
  cmsCloseProfile(profile);
  if (!saved) {
    free(bytes);
    return NULL;
  }
  SetDate(bytes);
  *size = needed;
  return bytes;
}
