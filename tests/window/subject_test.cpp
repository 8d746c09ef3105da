#include "host/commands/session.h"
#include "host/graph/scene.h"
#include "window/subject.h"

#include <gtest/gtest.h>

namespace {

using namespace window;
using host::graph::Scene;

class SubjectTest : public testing::Test {
protected:
    SubjectTest() { Scene::current().clear(); }
    ~SubjectTest() override { Scene::current().clear(); }
    static void run(const std::string& text) {
        EXPECT_TRUE(host::script::Session::current().run(text, "test").ok) << text;
        update_meshes();
    }
};

TEST_F(SubjectTest, EmptySceneHasNoSubject) {
    EXPECT_FALSE(find_subject({}).shape);
    EXPECT_EQ("", find_subject({}).shape_name());
}

TEST_F(SubjectTest, SelectedMeshIsTheSubject) {
    run("polyCube -n a; polyCube -n b; select a;");
    EXPECT_EQ("aShape", find_subject({}).shape_name());
}

TEST_F(SubjectTest, WithoutASelectionThePreviousSubjectIsKept) {
    run("polyCube -n a; polyCube -n b; select a;");
    const Subject before = find_subject({});
    run("select -cl;");
    EXPECT_EQ("aShape", find_subject(before).shape_name());
    EXPECT_EQ("bShape", find_subject({}).shape_name());
}

TEST_F(SubjectTest, DeletedMeshIsNoLongerTheSubject) {
    run("polyCube -n a; polyCube -n b; select a;");
    const Subject before = find_subject({});
    run("delete a;");
    EXPECT_EQ("bShape", find_subject(before).shape_name());
}

TEST_F(SubjectTest, HiddenMeshesAreSkipped) {
    run("polyCube -n a; polyCube -n b; setAttr b.visibility 0; select -cl;");
    EXPECT_EQ(1u, visible_meshes().size());
    EXPECT_EQ("aShape", find_subject({}).shape_name());
}

TEST_F(SubjectTest, MeshWithoutUnwrapNodeHasTheDefaultTexture) {
    run("polyCube -n a;");
    const Subject subject = find_subject({});
    EXPECT_FALSE(subject.node);
    EXPECT_EQ(512.0, subject.texture.width);
    EXPECT_EQ(2.0, subject.gutter);
    EXPECT_EQ("", subject.node_name());
}

TEST_F(SubjectTest, EditableAttributesListInputsBeforeOutputs) {
    run("polyCube -n a -w 3;");
    host::graph::Node* maker = Scene::current().find("polyCube1");
    ASSERT_NE(nullptr, maker);
    const auto slots = editable_slots(*maker);
    bool has_width = false;
    for (const host::graph::Slot* slot : slots) {
        has_width |= slot->attribute().long_name() == "width";
        EXPECT_NE("output", slot->attribute().long_name());
    }
    EXPECT_TRUE(has_width);
}

TEST_F(SubjectTest, FileExtensionSelectsOpenImportOrSource) {
    EXPECT_EQ("file -open -force \"a b.OBJ\";", statement_for_file("a b.OBJ", false));
    EXPECT_EQ("file -import \"x.ma\";", statement_for_file("x.ma", true));
    EXPECT_EQ("source \"x.mel\";", statement_for_file("x.mel", false));
    EXPECT_EQ("", statement_for_file("x.fbx", false));
    EXPECT_EQ("", statement_for_file("obj", false));
}

TEST(DroppedFiles, FirstMeshIsOpenedAndTheOthersImported) {
    std::vector<std::string> refused;
    EXPECT_EQ((std::vector<std::string>{"file -open -force \"/a.obj\";", "file -import \"/b.ma\";",
                                        "file -import \"/c.OBJ\";"}),
              statements_for_drop({"/a.obj", "/b.ma", "/c.OBJ"}, true, refused));
    EXPECT_TRUE(refused.empty());
}

TEST(DroppedFiles, AllAreImportedUnlessReplacingIsAllowed) {
    std::vector<std::string> refused;
    EXPECT_EQ((std::vector<std::string>{"file -import \"/a.obj\";"}),
              statements_for_drop({"/a.obj"}, false, refused));
}

TEST(DroppedFiles, FirstMeshIsOpenedEvenAfterAScript) {
    std::vector<std::string> refused;
    EXPECT_EQ((std::vector<std::string>{"source \"/s.mel\";", "file -open -force \"/a.obj\";"}),
              statements_for_drop({"/s.mel", "/a.obj"}, true, refused));
}

TEST(DroppedFiles, UnsupportedFilesAreRefusedByName) {
    std::vector<std::string> refused;
    EXPECT_EQ((std::vector<std::string>{"file -open -force \"/a.obj\";"}),
              statements_for_drop({"/photo.png", "/a.obj", "/noextension"}, true, refused));
    EXPECT_EQ((std::vector<std::string>{"/photo.png", "/noextension"}), refused);
}

} // namespace
