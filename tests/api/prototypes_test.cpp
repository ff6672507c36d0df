// prototypes_test.cpp: the declarations of the public headers against types written out by hand.
#include <gtest/gtest.h>

#include <type_traits>

#include "flat_prototypes.h"
#include "tavell/CreateTavell.h"
#include "tavell/ICircuit.h"
#include "tavell/IElement.h"
#include "tavell/IEntity.h"
#include "tavell/IFeedback.h"
#include "tavell/IFeedbackCollection.h"
#include "tavell/IFluid.h"
#include "tavell/INode.h"
#include "tavell/IPropertySet.h"
#include "tavell/IResultsExporterOptions.h"
#include "tavell/IResultsSet.h"
#include "tavell/ITavell.h"

using namespace Velcor::Tavell;

#define TAVELL_CHECK(name, ...)                                                                              \
    static_assert(std::is_same_v<decltype(name), __VA_ARGS__>, "prototype of " #name);
TAVELL_FLAT_FUNCTIONS(TAVELL_CHECK)
#undef TAVELL_CHECK

static_assert(std::is_same_v<decltype(CreateTavell), ITavell*(bool)>);
static_assert(std::is_same_v<decltype(GetBuildDetails),
                             void(bool, int&, int&, int&, int&, int&, int&, int&, int&, int&, int&, int&,
                                  int&, int&, int&, int&, int&, int&, int&, int&)>);

namespace
{

/// An interface as hosts rely on it: pure operations, no data beyond the table pointer.
template <typename Interface>
constexpr bool kPureTable = std::is_abstract_v<Interface> && sizeof(Interface) == sizeof(void*);

/// A host cannot destroy the object through the interface in a way that reaches the object's own destructor.
template <typename Interface>
constexpr bool kOwnedByTheLibrary = kPureTable<Interface> && !std::has_virtual_destructor_v<Interface>;

}  // namespace

TEST(Prototypes, only_the_system_object_has_a_virtual_destructor)
{
    EXPECT_TRUE(kPureTable<ITavell> && std::has_virtual_destructor_v<ITavell>);
    EXPECT_TRUE(kOwnedByTheLibrary<ICircuit>);
    EXPECT_TRUE(kOwnedByTheLibrary<INode>);
    EXPECT_TRUE(kOwnedByTheLibrary<IElement>);
    EXPECT_TRUE(kOwnedByTheLibrary<IEntity>);
    EXPECT_TRUE(kOwnedByTheLibrary<IPropertySet>);
    EXPECT_TRUE(kOwnedByTheLibrary<IFluid>);
    EXPECT_TRUE(kOwnedByTheLibrary<IFeedbackCollection>);
    EXPECT_TRUE(kOwnedByTheLibrary<IFeedback>);
    EXPECT_TRUE(kOwnedByTheLibrary<IResultsSet>);
    EXPECT_TRUE(kOwnedByTheLibrary<IResultsExporterOptions>);
}
