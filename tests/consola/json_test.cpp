// JSON as other programs read it.
#include "consola/json.h"

#include <optional>
#include <utility>

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(TextoJson, MembersStandInTheOrderInWhichTheyCame) {
    Json json;
    json.poner("z", "último");
    json.poner("a", std::int64_t{-1} << 40);
    json.poner("si", true);
    json.poner("nada", Json());
    json.poner("quiza", std::optional<int>());
    json.poner("tal_vez", std::optional<int>(7));
    EXPECT_EQ(json.enUnaLinea(),
              "{\"z\":\"último\",\"a\":-1099511627776,\"si\":true,\"nada\":null,\"quiza\":null,"
              "\"tal_vez\":7}\n");
    json.poner("z", "otro");
    EXPECT_TRUE(json.enUnaLinea().starts_with("{\"z\":\"otro\",\"a\"")) << "in its place";
}

TEST(TextoJson, PeopleReadItOverSeveralLines) {
    auto lista = Json::lista({1, "dos"});
    lista.agregar(Json::lista());
    Json json;
    json.poner("lista", std::move(lista));
    EXPECT_EQ(json.conSangria(), "{\n  \"lista\": [\n    1,\n    \"dos\",\n    []\n  ]\n}\n");
    EXPECT_EQ(Json().conSangria(), "null\n");
}

TEST(TextoJson, WhateverStandsInATextItIsUtf8WithoutOrdersToATerminal) {
    EXPECT_EQ(Json("a\x1b[2J\n\x7f\xc2\x9b\xffñ").enUnaLinea(),
              "\"a\\u001b[2J\\n\\u007f\\u009b\xEF\xBF\xBDñ\"\n");
}

TEST(TextoJson, ACopyIsAValueOfItsOwn) {
    Json json;
    json.poner("a", 1);
    auto otra = json;
    otra.poner("a", 2);
    json.poner("dentro", otra);
    otra = Json("ya no");
    EXPECT_EQ(json.enUnaLinea(), "{\"a\":1,\"dentro\":{\"a\":2}}\n");
    EXPECT_EQ(otra.enUnaLinea(), "\"ya no\"\n");
}

}  // namespace
}  // namespace telvane
