// tests/hostrun/unit/declaration_test.cpp - what a declaration string says.
#include <gtest/gtest.h>

#include <utility>

#include "hostrun/host/declaration.h"
#include "hostrun/host/functions.h"

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

TEST(Signature, TakesModifiersInAnyOrder) {
  const Signature s =
      ParseSignature("f(optional byval a as integer, ByVal ByRef b as double, assigns c as string)");
  EXPECT_FALSE(s.parameters[0].byref);
  EXPECT_TRUE(s.parameters[1].byref);
  EXPECT_FALSE(s.parameters[1].assigns);
  EXPECT_TRUE(s.parameters[2].assigns);
  EXPECT_EQ(s.parameters[2].name, "c");
  EXPECT_EQ(ParseSignature("f(byref as integer)").parameters[0].name, "byref");
}

TEST(Signature, IsToldAsItIsDeclared) {
  EXPECT_EQ(ParseSignature("f").Text(), "f");
  EXPECT_EQ(ParseSignature("f() as double()").Text(), "f as Double()");
  EXPECT_EQ(ParseSignature("f(byref a as double,b as integer=5,assigns c() as string)").Text(),
            "f(byref a as Double, b as Integer = ..., assigns c as String())");
  EXPECT_EQ(ParseSignature("f(paramarray n as double) as color").Text(),
            "f(paramarray n as Double) as Color");
}

TEST(Signature, IsAnotherByItsNameAndEachOfItsParameters) {
  const Signature s = ParseSignature("f(a as integer, b as double)");
  EXPECT_TRUE(SameSignature(s, ParseSignature("F(x as integer, y as double)")));
  for (const char* const other :
       {"g(a as integer, b as double)", "f(a as integer)", "f(a as integer, b as double, c as double)",
        "f(a as integer, b as integer)", "f(a as integer, byref b as double)"}) {
    EXPECT_FALSE(SameSignature(s, ParseSignature(other))) << other;
  }
}

TEST(Signature, HasThirtyParametersAtMost) {
  std::string declaration = "f(a as integer";
  for (int i = 1; i < 30; ++i) declaration += ", a as integer";
  EXPECT_EQ(ParseSignature(declaration + ")").parameters.size(), 30U);
  try {
    ParseSignature(declaration + ", z as integer)");
    FAIL() << "wanted a refusal";
  } catch (const DeclarationError& error) {
    EXPECT_TRUE(
        std::string(error.what()).starts_with("wanted at most 30 parameters, found \"z as integer)\""));
  }
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
  EXPECT_EQ(refusal("f(x as double("), "wanted ')' after '(' of an array type, found its end at position 15");
  EXPECT_EQ(refusal("f(x( as double)"),
            "wanted ')' after '(' of an array parameter, found \"as double)\" at position 6");
  EXPECT_EQ(refusal("f(paramarray x as double, y as double)"),
            "wanted no parameter after a parameter array, found \"y as double)\" at position 27");
  EXPECT_EQ(refusal("f(x as double,)"), "wanted a parameter name, found \")\" at position 15");
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

struct Declared {
  const char* declaration;
  Kind kind;
  const char* value;
};

TEST(Constant, HasTheTypeOfItsValueOrTheOneThatIsDeclared) {
  const Declared constants[] = {{"A=&hFF", Kind::Integer, "255"},
                                {"A=&HfFfFfFfF", Kind::Integer, "-1"},
                                {"A=&cFF8000", Kind::Color, "&cFF8000"},
                                {"A = +3", Kind::Integer, "3"},
                                {"A=-1.5", Kind::Double, "-1.5"},
                                {"A=.5", Kind::Double, "0.5"},
                                {"A=2147483647", Kind::Integer, "2147483647"},
                                {"A=-2147483648", Kind::Integer, "-2147483648"},
                                {"A=2147483648", Kind::Int64, "2147483648"},
                                {"A=True", Kind::Boolean, "True"},
                                {"A=false", Kind::Boolean, "False"},
                                {"A=\"\"", Kind::String, ""},
                                {"A as double = 3", Kind::Double, "3"},
                                {"A as single = 0.5", Kind::Single, "0.5"},
                                {"A as integer = 2.9", Kind::Integer, "2"},
                                {"A as int64 = 3", Kind::Int64, "3"},
                                {"A as string = \"text\"", Kind::String, "text"},
                                {"A as boolean = true", Kind::Boolean, "True"},
                                {"A as color = &c010203", Kind::Color, "&c010203"},
                                {"A as variant = \"any\"", Kind::Variant, "any"},
                                {"A as MemoryBlock = nil", Kind::Object, "Nil"},
                                {"A as double() = nil", Kind::Array, "Nil"}};
  for (const auto& [declaration, kind, value] : constants) {
    const ConstantDeclaration constant = ParseConstant(declaration);
    EXPECT_EQ(constant.name, "A");
    EXPECT_EQ(constant.type->kind, kind) << declaration;
    EXPECT_EQ(ExactText(constant.value), value) << declaration;
  }
}

TEST(Constant, OfAnotherTypeOrOfNoneIsRefusedWithItsPlace) {
  const std::pair<const char*, const char*> refusals[] = {
      {"A as boolean = 1", "a default value of type Boolean before this, found its end at position 17"},
      {"A as double = true", "a default value of type Double before this, found its end at position 19"},
      {"A as integer = \"x\"", "a default value of type Integer before this, found its end at position 19"},
      {"A as int64 = nil", "a default value of type Int64 before this, found its end at position 17"},
      {"A as MemoryBlock = 1",
       "a default value of type MemoryBlock before this, found its end at position 21"},
      {"A=\"open", "a closing '\"', found \"open\" at position 4"},
      {"A=&x1", "hexadecimal digits after &h or &c, found \"x1\" at position 4"},
      {"A=&h", "hexadecimal digits after &h or &c, found \"h\" at position 4"},
      {"A=&c1FFFFFFFF", "hexadecimal digits after &h or &c, found \"c1FFFFFFFF\" at position 4"},
      {"A=-", "a number, a string, true, false or nil, found its end at position 4"},
      {"A=.", "a number, a string, true, false or nil, found its end at position 4"},
      {"A=truely", "a number, a string, true, false or nil, found \"truely\" at position 3"},
      {"A=1 2", "the declaration's end, found \"2\" at position 5"},
      {"A:1", "'=' after a constant's name, found \":1\" at position 2"},
      {"=1", "a constant's name, found \"=1\" at position 1"}};
  for (const auto& [declaration, refusal] : refusals) {
    try {
      ParseConstant(declaration);
      ADD_FAILURE() << declaration << " was taken";
    } catch (const DeclarationError& error) {
      EXPECT_EQ(error.what(), std::string("wanted ") + refusal) << declaration;
    }
  }
}

// What lies behind the text is none of its digits.
TEST(Constant, EndsWhereItsTextEnds) {
  try {
    ParseConstant(std::string_view("A=&hFF", 3));
    FAIL() << "wanted a refusal";
  } catch (const DeclarationError& error) {
    EXPECT_STREQ(error.what(), "wanted hexadecimal digits after &h or &c, found its end at position 4");
  }
  EXPECT_EQ(ParseConstant(std::string_view("A=&hFF", 5)).value.integer(), 15);
}

}  // namespace
}  // namespace hostrun
