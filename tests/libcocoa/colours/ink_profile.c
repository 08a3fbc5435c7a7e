// tests/libcocoa/colours/ink_profile.c - a printer with many inks and a scanner, made with Little CMS.
#include "tests/libcocoa/colours/ink_profile.h"

#include <stdlib.h>

enum { kFewest = 1, kMost = 15 };
enum { kMostForThreePoints = 8 };  // in each direction of a grid; above it, two have to do

// Lab as a table holds it: 0 to 65535 stands for L from 0 to 100, a and b from -128 to 127.
static cmsUInt16Number Encoded(double value, double low, double high) {
  double share = (value - low) / (high - low);
  return (cmsUInt16Number)(0.5 + 65535 * (share < 0 ? 0 : share > 1 ? 1 : share));
}

static cmsInt32Number LabOfInks(const cmsUInt16Number in[], cmsUInt16Number out[], void* cargo) {
  unsigned inks = *(const unsigned*)cargo;
  double others = 0;
  for (unsigned i = 3; i < inks; i++) others += in[i] / 65535.0 / (inks - 3);
  out[0] = Encoded(100 * (1 - in[0] / 65535.0) * (1 - others / 2), 0, 100);
  for (unsigned i = 1; i < 3; i++) out[i] = Encoded(i < inks ? 200 * (in[i] / 65535.0) - 100 : 0, -128, 127);
  return 1;
}

static cmsInt32Number InksOfLab(const cmsUInt16Number in[], cmsUInt16Number out[], void* cargo) {
  unsigned inks = *(const unsigned*)cargo;
  out[0] = (cmsUInt16Number)(65535 - in[0]);
  for (unsigned i = 1; i < 3 && i < inks; i++) out[i] = Encoded(in[i] / 65535.0 * 255 - 128, -100, 100);
  for (unsigned i = 3; i < inks; i++) out[i] = 0;
  return 1;
}

static cmsInt32Number LabOfLight(const cmsUInt16Number in[], cmsUInt16Number out[], void* cargo) {
  (void)cargo;
  out[0] = in[1];
  out[1] = out[2] = Encoded(0, -128, 127);
  return 1;
}

static int AddTable(cmsHPROFILE profile, cmsTagSignature tag, cmsPipeline* table) {
  int written = table && cmsWriteTag(profile, tag, table);
  cmsPipelineFree(table);
  return written;
}

static cmsPipeline* Table(unsigned from, unsigned to, unsigned points, cmsSAMPLER16 sampler, unsigned inks) {
  cmsPipeline* table = cmsPipelineAlloc(NULL, from, to);
  cmsStage* grid = cmsStageAllocCLut16bit(NULL, points, from, to, NULL);
  if (!table || !grid) return table;
  cmsStageSampleCLut16bit(grid, sampler, &inks, 0);
  cmsPipelineInsertStage(table, cmsAT_END, cmsStageAllocToneCurves(NULL, from, NULL));  // straight ones
  cmsPipelineInsertStage(table, cmsAT_END, grid);
  cmsPipelineInsertStage(table, cmsAT_END, cmsStageAllocToneCurves(NULL, to, NULL));
  return table;
}

// A profile of that name, as far as the two kinds are alike; NULL if it can't be made.
static cmsHPROFILE Begun(cmsProfileClassSignature kind, cmsColorSpaceSignature space, const char* name) {
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(NULL);
  if (!profile) return NULL;
  cmsSetProfileVersion(profile, 4.3);
  cmsSetDeviceClass(profile, kind);
  cmsSetColorSpace(profile, space);
  cmsSetPCS(profile, cmsSigLabData);
  cmsMLU* text = cmsMLUalloc(NULL, 1);
  cmsMLUsetASCII(text, "en", "US", name);
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
  cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
  cmsMLUfree(text);
  return profile;
}

// Closes the profile. Its bytes; NULL if it was not made whole.
static void* Finished(cmsHPROFILE profile, int made, size_t* size) {
  cmsUInt32Number needed = 0;
  void* bytes = NULL;
  if (made && cmsSaveProfileToMem(profile, NULL, &needed)) bytes = malloc(needed);
  if (bytes && !cmsSaveProfileToMem(profile, bytes, &needed)) {
    free(bytes);
    bytes = NULL;
  }
  if (profile) cmsCloseProfile(profile);
  *size = needed;
  return bytes;
}

// "1CLR" to "FCLR".
static cmsColorSpaceSignature Signature(unsigned inks) {
  return (cmsColorSpaceSignature)((cmsUInt32Number)(inks < 10 ? '0' + inks : 'A' + inks - 10) << 24 |
                                  0x434C52);
}

void* MakeInkProfile(unsigned inks, size_t* size) {
  if (inks < kFewest || inks > kMost) return NULL;
  cmsHPROFILE profile = Begun(cmsSigOutputClass, Signature(inks), "Many Inks");
  int made = profile &&
             AddTable(profile, cmsSigAToB0Tag,
                      Table(inks, 3, inks > kMostForThreePoints ? 2 : 3, LabOfInks, inks)) &&
             AddTable(profile, cmsSigBToA0Tag, Table(3, inks, 33, InksOfLab, inks));
  return Finished(profile, made, size);
}

void* MakeInputProfile(cmsColorSpaceSignature space, size_t* size) {
  unsigned channels = cmsChannelsOf(space);
  cmsHPROFILE profile = Begun(cmsSigInputClass, space, "Grey Eye");
  int made = profile && AddTable(profile, cmsSigAToB0Tag, Table(channels, 3, 3, LabOfLight, channels));
  return Finished(profile, made, size);
}
