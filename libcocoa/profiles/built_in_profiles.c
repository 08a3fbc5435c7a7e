// libcocoa/profiles/built_in_profiles.c - the profiles that the library makes itself: the same bytes in every
// run.
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
  cmsToneCurve* curves[3] = {curve, curve, curve};
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

static int SetDescription(cmsContext context, cmsHPROFILE profile, const char* text) {
  cmsMLU* description = cmsMLUalloc(context, 1);
  if (!description) return 0;
  int done = cmsMLUsetASCII(description, "en", "US", text) &&
             cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
  cmsMLUfree(description);
  return done;
}

// The header's date is the only thing that two runs would make differently.
static void SetDate(unsigned char* bytes) {
  static const unsigned char newYear2009[12] = {0x07, 0xD9, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
  memcpy(bytes + 24, newYear2009, sizeof newYear2009);
}

void* QVXMakeBuiltIn(QVXBuiltIn which, size_t* size) {
  cmsContext context = QVXLittleCMS();
  cmsHPROFILE profile = NULL;
  const char* description = "";
  switch (which) {
    case QVXBuiltInSRGB:
      profile = cmsCreate_sRGBProfileTHR(context);
      description = "sRGB IEC61966-2.1";
      break;
    case QVXBuiltInAdobeRGB:
      profile = MakeRGB(context, &kAdobePrimaries, kAdobeGamma);
      description = "Adobe RGB (1998)";
      break;
    case QVXBuiltInGenericRGB:
      profile = MakeRGB(context, &kGenericPrimaries, kGenericGamma);
      description = "Generic RGB Profile";
      break;
    case QVXBuiltInGenericGray:
      profile = MakeGray(context, kGenericGamma);
      description = "Generic Gray Profile";
      break;
    case QVXBuiltInGamma22Gray:
      profile = MakeGray(context, 2.2);
      description = "Generic Gray Gamma 2.2 Profile";
      break;
    case QVXBuiltInCount:
      break;
  }
  if (!profile) return NULL;
  unsigned char* bytes = NULL;
  cmsUInt32Number needed = 0;
  if (SetDescription(context, profile, description) && cmsSaveProfileToMem(profile, NULL, &needed)) {
    bytes = malloc(needed);
    if (bytes && !cmsSaveProfileToMem(profile, bytes, &needed)) {
      free(bytes);
      bytes = NULL;
    }
  }
  cmsCloseProfile(profile);
  if (!bytes) return NULL;
  SetDate(bytes);
  *size = needed;
  return bytes;
}
