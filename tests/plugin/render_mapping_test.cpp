// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The mapping of a frame's picture: reused, made anew, given up.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace {

using recording::journal;

/// A drawn text at the default position and size.
std::string drawn(std::string const& text)
{
    return "drawText 10 10 16 0 0 \"" + text + "\" on 1920x1080\n";
}

class RenderMappingTest : public testing::Test {
protected:
    RenderMappingTest()
    {
        test_clock::setNowNs(1000);
        plugin_.init(host_.init());
        plugin_.setConfig(R"({"overlay":[{"formatString":"v=%v"}]})");
        host_.deliver(R"({"v":7})");
    }

    std::string mappingCalls(RenderContext& context)
    {
        journal().clear();
        plugin_.render(context);
        return journal().text({"clone", "makeRenderTarget", "map", "unmap", "end of target", "drawText"});
    }

    TestHost host_;
    StanagOverlayPlugin plugin_;
};

}  // namespace

TEST_F(RenderMappingTest, IsReusedInTheSameContext)
{
    RenderContext& context = host_.nextFrame(1);
    EXPECT_EQ(mappingCalls(context), "clone\nmakeRenderTarget\nmap recording 1\n" + drawn("v=7"));
    EXPECT_TRUE(context.mapping.mapped);
    EXPECT_EQ(context.mapping.backend, &host_.backend);
    EXPECT_EQ(mappingCalls(host_.sameContext(2)), drawn("v=7"));
}

TEST_F(RenderMappingTest, IsSharedByPluginsWithTheSameBackend)
{
    RenderContext& context = host_.nextFrame(1);
    StanagOverlayPlugin other;
    other.init(host_.init());
    other.render(context);
    EXPECT_EQ(mappingCalls(context), drawn("v=7"));
}

TEST_F(RenderMappingTest, IsMadeAnewForAnotherBackend)
{
    RenderContext& context = host_.nextFrame(1);
    recording::Backend other("other");
    StanagOverlayPlugin first;
    first.init({&other, &host_.painter});
    first.render(context);
    // The guard ends before its target; the writable copy stays the same one.
    EXPECT_EQ(mappingCalls(context),
              "unmap other 1\nend of target\nmakeRenderTarget\nmap recording 1\n" + drawn("v=7"));
    EXPECT_EQ(context.mapping.backend, &host_.backend);
}

TEST_F(RenderMappingTest, OfAnotherBackendIsGivenUpBeforeTheCopyCanFail)
{
    RenderContext& context = host_.nextFrame(1);
    recording::Backend other("other");
    StanagOverlayPlugin first;
    first.init({&other, &host_.painter});
    first.render(context);
    context.picture.reset("/camera", 0, std::make_shared<zelvo::ZelvoPicture>(64U, 48U), host_.pool, {});
    journal().clear();
    EXPECT_THROW(plugin_.render(context), std::runtime_error);
    EXPECT_EQ(journal().text({"map", "unmap", "end of target"}), "unmap other 1\nend of target\n");
    EXPECT_FALSE(context.mapping.mapped);
    EXPECT_EQ(context.mapping.target, nullptr);
    EXPECT_EQ(context.mapping.backend, nullptr);
}

TEST_F(RenderMappingTest, ThatLostItsPlanesIsMadeAnew)
{
    std::uint8_t* const plane = recording::anyPlane();
    struct Row {
        char const* name;
        MappedNV12 planes;
    };
    for (Row const& row :
         {Row{"no luma", {nullptr, plane, 8, 8, 0, 0}}, Row{"no chroma", {plane, nullptr, 8, 8, 0, 0}},
          Row{"no width", {plane, plane, 0, 8, 0, 0}}, Row{"no height", {plane, plane, 8, 0, 0, 0}},
          Row{"negative width", {plane, plane, -8, 8, 0, 0}}, Row{"negative height", {plane, plane, 8, -8, 0, 0}}}) {
        SCOPED_TRACE(row.name);
        recording::Backend backend("host");
        plugin_.init({&backend, &host_.painter});
        RenderContext& context = host_.nextFrame(1);
        context.mapping.target = std::make_unique<zelvo::ZelvoPicture>(8U, 8U)->makeRenderTarget();
        context.mapping.guard = {row.planes, [] { journal().note("unmap old"); }};
        context.mapping.mapped = true;
        context.mapping.backend = &backend;
        // The new target takes the old one's place, the new guard the old one's once it is good.
        EXPECT_EQ(mappingCalls(context),
                  "clone\nmakeRenderTarget\nend of target\nmap host 1\nunmap old\n" + drawn("v=7"));
        EXPECT_TRUE(context.mapping.mapped);
    }
}

TEST_F(RenderMappingTest, ThatIsNotFlaggedIsMadeAnew)
{
    RenderContext& context = host_.nextFrame(1);
    plugin_.render(context);
    context.mapping.mapped = false;
    EXPECT_EQ(mappingCalls(context),
              "makeRenderTarget\nend of target\nmap recording 2\nunmap recording 1\n" + drawn("v=7"));
}

TEST_F(RenderMappingTest, WithoutTargetNothingIsDrawn)
{
    recording::controls(*host_.pool).copiesGiveNoTarget = true;
    RenderContext& context = host_.nextFrame(1);
    journal().clear();
    plugin_.render(context);
    EXPECT_EQ(journal().text(), "payload 1 telemetry\nclone\nmakeRenderTarget\n");
    EXPECT_EQ(context.mapping.target, nullptr);
    EXPECT_FALSE(context.mapping.mapped);
}

TEST_F(RenderMappingTest, ThatFailsIsUndoneAndNothingIsDrawn)
{
    std::uint8_t* const plane = recording::anyPlane();
    struct Row {
        char const* name;
        MappedNV12 planes;
    };
    for (Row const& row :
         {Row{"no luma", {nullptr, plane, 8, 8, 0, 0}}, Row{"no chroma", {plane, nullptr, 8, 8, 0, 0}},
          Row{"no width", {plane, plane, 0, 8, 0, 0}}, Row{"no height", {plane, plane, 8, 0, 0, 0}},
          Row{"negative width", {plane, plane, -8, 8, 0, 0}}, Row{"negative height", {plane, plane, 8, -8, 0, 0}}}) {
        SCOPED_TRACE(row.name);
        recording::Backend backend("host");
        plugin_.init({&backend, &host_.painter});
        backend.mapsTo = row.planes;
        RenderContext& context = host_.nextFrame(1);
        journal().clear();
        plugin_.render(context);
        EXPECT_EQ(journal().text(),
                  "payload 1 telemetry\nclone\nmakeRenderTarget\nmap host 1\nend of target\nunmap host 1\n");
        EXPECT_FALSE(context.mapping.mapped);
        EXPECT_EQ(context.mapping.target, nullptr);
        EXPECT_EQ(context.mapping.backend, nullptr);

        backend.mapsTo.reset();
        EXPECT_EQ(mappingCalls(context), "makeRenderTarget\nmap host 2\n" + drawn("v=7"));
    }
}

TEST_F(RenderMappingTest, ThatLostItsPlanesAndCannotBeMadeAnewIsForgotten)
{
    RenderContext& context = host_.nextFrame(1);
    context.mapping.guard = {MappedNV12{}, [] { journal().note("unmap old"); }};
    context.mapping.mapped = true;
    context.mapping.backend = &host_.backend;
    host_.backend.mapsTo = MappedNV12{};
    EXPECT_EQ(mappingCalls(context), "clone\nmakeRenderTarget\nmap recording 1\nend of target\nunmap recording 1\n");
    EXPECT_TRUE(context.mapping.mapped) << "only a mapping of another backend loses its flag";
    EXPECT_EQ(context.mapping.target, nullptr);
    EXPECT_EQ(context.mapping.backend, nullptr);

    // The old guard ends when a new one takes its place.
    host_.backend.mapsTo.reset();
    EXPECT_EQ(mappingCalls(context), "makeRenderTarget\nmap recording 2\nunmap old\n" + drawn("v=7"));
}

TEST_F(RenderMappingTest, ANewPictureMayBeDrawnOnThroughAKeptMapping)
{
    // The host answers for the mapping that it keeps in the context: what is flagged and valid is used.
    RenderContext& context = host_.nextFrame(1);
    plugin_.render(context);
    context.picture.reset("/camera", 2, std::make_shared<zelvo::ZelvoPicture>(1280U, 720U), host_.pool, {});
    EXPECT_EQ(mappingCalls(context), "drawText 6 6 10 0 0 \"v=7\" on 1920x1080\n");
}
