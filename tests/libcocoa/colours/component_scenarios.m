// tests/libcocoa/colours/component_scenarios.m - which components each kind of colour tells, and which it
// refuses.
#import "tests/libcocoa/colours/scenario.h"

typedef enum { kNumber, kOther } Answer;

static const struct {
  const char* name;
  Answer answer;
} kMethods[] = {
    {"redComponent", kNumber},
    {"greenComponent", kNumber},
    {"blueComponent", kNumber},
    {"hueComponent", kNumber},
    {"saturationComponent", kNumber},
    {"brightnessComponent", kNumber},
    {"whiteComponent", kNumber},
    {"cyanComponent", kNumber},
    {"magentaComponent", kNumber},
    {"yellowComponent", kNumber},
    {"blackComponent", kNumber},
    {"numberOfComponents", kOther},
    {"getComponents:", kOther},
    {"catalogNameComponent", kOther},
    {"colorNameComponent", kOther},
    {"localizedCatalogNameComponent", kOther},
    {"localizedColorNameComponent", kOther},
    {"patternImage", kOther},
    {"getRed:green:blue:alpha:", kOther},
    {"getHue:saturation:brightness:alpha:", kOther},
    {"getWhite:alpha:", kOther},
    {"getCyan:magenta:yellow:black:alpha:", kOther},
};
enum { kMethodCount = sizeof kMethods / sizeof *kMethods };

// Calls the method with room for components, or with nothing where it asks for places.
static void Call(NSColor* color, const char* name, Answer answer) {
  SEL selector = sel_registerName(name);
  void (*method)(void) = (void (*)(void))[color methodForSelector:selector];
  CGFloat room[32];
  if (answer == kNumber)
    room[0] = ((CGFloat(*)(id, SEL))method)(color, selector);
  else if (strcmp(name, "getComponents:") == 0)
    ((void (*)(id, SEL, CGFloat*))method)(color, selector, room);
  else
    ((void (*)(id, SEL, void*, void*, void*, void*, void*))method)(color, selector, NULL, NULL, NULL, NULL,
                                                                   NULL);
}

// The methods that answer; of those that refuse, each has to be named by the reason.
static NSString* AnsweredBy(NSColor* color) {
  NSMutableArray* answered = [NSMutableArray array];
  for (int i = 0; i < kMethodCount; ++i) {
    NSString* wanted = [NSString stringWithFormat:@"*** -%s not valid for the NSColor ", kMethods[i].name];
    @try {
      Call(color, kMethods[i].name, kMethods[i].answer);
      [answered addObject:[NSString stringWithUTF8String:kMethods[i].name]];
    } @catch (NSException* exception) {
      if (![[exception name] isEqual:NSInternalInconsistencyException] ||
          ![[exception reason] hasPrefix:wanted])
        [answered addObject:[exception reason]];
    }
  }
  return [answered componentsJoinedByString:@" "];
}

static NSColor* Custom(NSString* profile, int count) {
  const CGFloat components[] = {0.125F, 0.25F, 0.5F, 0.75F, 0.625F};
  NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(profile)] autorelease];
  return [NSColor colorWithColorSpace:space components:components count:count];
}

SCENARIO("a pattern has an image and refuses all components", "", "patternImage") {
  return AnsweredBy(Pattern());
}

SCENARIO(
    "a system colour has names and refuses all components", "",
    "catalogNameComponent colorNameComponent localizedCatalogNameComponent localizedColorNameComponent") {
  return AnsweredBy([NSColor controlColor]);
}

SCENARIO("a custom RGB colour refuses the components of other models", "",
         "redComponent greenComponent blueComponent hueComponent saturationComponent brightnessComponent "
         "numberOfComponents getComponents: getRed:green:blue:alpha: getHue:saturation:brightness:alpha:") {
  return AnsweredBy(Custom(@"a98.icc", 4));
}

SCENARIO("a custom gray refuses the components of other models", "",
         "whiteComponent numberOfComponents getComponents: getWhite:alpha:") {
  return AnsweredBy(Custom(@"sgray.icc", 2));
}

SCENARIO("a custom CMYK colour refuses the components of other models", "",
         "cyanComponent magentaComponent yellowComponent blackComponent numberOfComponents getComponents: "
         "getCyan:magenta:yellow:black:alpha:") {
  return AnsweredBy(Custom(@"ps_cmyk.icc", 5));
}

SCENARIO("a custom colour gives as many components as it has", "", "0.250 0.500 0.750 0.125, then nothing") {
  CGFloat c[] = {0, 0, 0, 0, -1};
  [[NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:0.125] getComponents:c];
  return [NSString stringWithFormat:@"%.3f %.3f %.3f %.3f, then %@", c[0], c[1], c[2], c[3],
                                    c[4] == -1 ? @"nothing" : @"more"];
}

SCENARIO("a custom Lab colour has components without names", "", "numberOfComponents getComponents:") {
  return AnsweredBy(Custom(@"lab.icc", 4));
}

#define FIVE @"%.3f %.3f %.3f %.3f %.3f"

SCENARIO("a custom RGB colour tells the same components one by one and together", "",
         "0.125 0.250 0.500 0.750 0.000; 0.125 0.250 0.500 0.750 0.000") {
  NSColor* color = Custom(@"a98.icc", 4);
  CGFloat c[5] = {0};
  [color getRed:&c[0] green:&c[1] blue:&c[2] alpha:&c[3]];
  return
      [NSString stringWithFormat:FIVE "; " FIVE, (double)c[0], (double)c[1], (double)c[2], (double)c[3],
                                 (double)c[4], (double)[color redComponent], (double)[color greenComponent],
                                 (double)[color blueComponent], (double)[color alphaComponent], 0.0];
}

SCENARIO("a custom RGB colour tells the same hue one by one and together", "",
         "0.611 0.750 0.500 0.750; 0.611 0.750 0.500 0.750") {
  NSColor* color = Custom(@"a98.icc", 4);
  CGFloat c[4] = {0};
  [color getHue:&c[0] saturation:&c[1] brightness:&c[2] alpha:&c[3]];
  return [NSString stringWithFormat:@"%.3f %.3f %.3f %.3f; %.3f %.3f %.3f %.3f", (double)c[0], (double)c[1],
                                    (double)c[2], (double)c[3], (double)[color hueComponent],
                                    (double)[color saturationComponent], (double)[color brightnessComponent],
                                    (double)[color alphaComponent]];
}

SCENARIO("a custom gray tells the same white one by one and together", "", "0.125 0.250; 0.125 0.250") {
  NSColor* color = Custom(@"sgray.icc", 2);
  CGFloat c[2] = {0};
  [color getWhite:&c[0] alpha:&c[1]];
  return [NSString stringWithFormat:@"%.3f %.3f; %.3f %.3f", (double)c[0], (double)c[1],
                                    (double)[color whiteComponent], (double)[color alphaComponent]];
}

SCENARIO("a custom CMYK colour tells the same components one by one and together", "",
         "0.125 0.250 0.500 0.750 0.625; 0.125 0.250 0.500 0.750 0.625") {
  NSColor* color = Custom(@"ps_cmyk.icc", 5);
  CGFloat c[5] = {0};
  [color getCyan:&c[0] magenta:&c[1] yellow:&c[2] black:&c[3] alpha:&c[4]];
  return [NSString stringWithFormat:FIVE "; " FIVE, (double)c[0], (double)c[1], (double)c[2], (double)c[3],
                                    (double)c[4], (double)[color cyanComponent],
                                    (double)[color magentaComponent], (double)[color yellowComponent],
                                    (double)[color blackComponent], (double)[color alphaComponent]];
}
