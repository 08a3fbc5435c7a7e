// tests/hostrun/unit/declaration_test.cpp - what a declaration string says.
#include <gtest/gtest.h>

#include "hostrun/host/declaration.h"

namespace hostrun {
namespace {

TEST(Signature, NamesParametersTypesAndResult) {
  const Signature s = ParseSignature("blend(alpha as double, c as NSColorQVX) as NSColorQVX");
  EXPECT_EQ(s.name, "blend");
  ASSERT_EQ(s.parameters.size(), 2U);
  EXPECT_EQ(s.parameters[0].name, "alpha");
  EXPECT_EQ(s.parameters[0].type, TypeOf(Kind::Double));
  EXPECT_EQ(s.parameters[1].type->name, "NSColorQVX");
  EXPECT_EQ(s.result, s.parameters[1].type);
}

TEST(Signature, WithoutBracketsTakesNothing) {
  const Signature s = ParseSignature("removeFile");
  EXPECT_TRUE(s.parameters.empty());
  EXPECT_EQ(s.result, TypeOf(Kind::Nothing));
}

TEST(Signature, MaySayWhichKindOfMethodItIs) {
  EXPECT_TRUE(
      SameSignature(ParseSignature("Sub Close(hard as boolean)"), ParseSignature("Close(hard as boolean)")));
  EXPECT_TRUE(SameSignature(ParseSignature("FUNCTION Count As Integer"), ParseSignature("Count As Integer")));
  EXPECT_EQ(ParseSignature("function(x as integer)").name, "function");
  EXPECT_EQ(ParseSignature("sub").name, "sub");
}

TEST(Signature, BlanksAndCaseDoNotMatter) {
  EXPECT_TRUE(SameSignature(ParseSignature("LenB( s as string ) as integer"),
                            ParseSignature("lenb(text AS String)as Integer")));
}

TEST(Signature, AnotherResultIsAnotherSignature) {
  EXPECT_FALSE(SameSignature(ParseSignature("LenB(s as string) as integer"),
                             ParseSignature("LenB(s as string) as double")));
}

TEST(Signature, DefaultMakesAParameterOptional) {
  const Signature s = ParseSignature("make(red as double, alpha as double=1.0) as NSColorQVX");
  EXPECT_EQ(s.RequiredCount(), 1U);
  ASSERT_TRUE(s.parameters[1].defaultValue.has_value());
  EXPECT_EQ(s.parameters[1].defaultValue->real(), 1.0);
}

TEST(Signature, ByrefIsKept) {
  const Signature s = ParseSignature("getWhite(byref white as double, byref alpha as double)");
  EXPECT_TRUE(s.parameters[0].byref);
  EXPECT_TRUE(s.parameters[1].byref);
}

TEST(Signature, ParamArrayAndArrayParameterAreBothArrays) {
  const Signature packed = ParseSignature("f(paramarray components as double)");
  const Signature plain = ParseSignature("f(components() as double)");
  EXPECT_EQ(packed.parameters[0].type, ArrayOf(TypeOf(Kind::Double)));
  EXPECT_EQ(plain.parameters[0].type, packed.parameters[0].type);
  EXPECT_TRUE(packed.TakesAnyCount());
  EXPECT_FALSE(plain.TakesAnyCount());
}

TEST(Signature, ArrayResult) {
  EXPECT_EQ(ParseSignature("Components as double()").result, ArrayOf(TypeOf(Kind::Double)));
}

TEST(Signature, AParameterMayBeCalledLikeAModifier) {
  EXPECT_EQ(ParseSignature("f(optional as integer)").parameters[0].name, "optional");
}

TEST(Signature, RefusalsSayWhatWasWantedAndWhere) {
  const auto refusal = [](const char* declaration) -> std::string {
    try {
      ParseSignature(declaration);
    } catch (const DeclarationError& error) {
      return error.what();
    }
    return "accepted";
  };
  EXPECT_EQ(refusal(""), "wanted a method name, found its end at position 1");
  EXPECT_EQ(refusal("f(x)"), "wanted 'as' and a type after parameter x, found \")\" at position 4");
  EXPECT_EQ(refusal("f(x as double"), "wanted ')' after the parameters, found its end at position 14");
  EXPECT_EQ(refusal("f(x as double) as"), "wanted a type, found its end at position 18");
  EXPECT_EQ(refusal("f as double junk"), "wanted the declaration's end, found \"junk\" at position 13");
  EXPECT_EQ(refusal("f(x as double = \"a\")"),
            "wanted a default value of type Double before this, found \")\" at position 20");
}

TEST(Constant, NumberWithoutBlanks) {
  const ConstantDeclaration c = ParseConstant("NSUnknownColorSpaceModel=-1");
  EXPECT_EQ(c.name, "NSUnknownColorSpaceModel");
  EXPECT_EQ(c.type, TypeOf(Kind::Integer));
  EXPECT_EQ(c.value.integer(), -1);
}

TEST(Constant, StringWithBlanks) {
  const ConstantDeclaration c = ParseConstant("NSNamedColorSpace = \"NSNamedColorSpace\"");
  EXPECT_EQ(c.type, TypeOf(Kind::String));
  EXPECT_EQ(Utf8Of(c.value.string()), "NSNamedColorSpace");
}

TEST(Constant, WithoutValueIsRefused) {
  EXPECT_THROW(ParseConstant("Model"), DeclarationError);
}

}  // namespace
}  // namespace hostrun
