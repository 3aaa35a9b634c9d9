// The index side of a data file as an engine without index code answers it: seeks without a
// tag give 80, tags are found by walking the index files (none open here), and every call
// the data file makes into an index is routed through the table's index list.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::box_text;
using tabletest::upper;

class Table4Tag : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    void SetUp() override {
        table = create("T.DBF");
        ASSERT_NE(table, nullptr);
        for (int i = 1; i <= 3; ++i) ASSERT_EQ(append_row(table, "R", i, "20000101", true), 0);
    }
    void TearDown() override {
        if (table) table4_close(table);
    }
};

// Index and tag records made by hand, as an index file's open would hang them on the table.
struct FakeIndex {
    index4 index{};
    tag4 tags[2]{};
    FakeIndex(table4 *table, const char *first, const char *second) {
        index.file.handle = -1;
        index.table = table;
        index.engine = table->engine;
        for (int i = 0; i < 2; ++i) {
            tags[i].index = &index;
            tags[i].engine = table->engine;
            std::strcpy(tags[i].name, i ? second : first);
            l4_add(&index.tag_list, &tags[i]);
        }
    }
};

TEST_F(Table4Tag, SeeksWithoutATagGive80) {
    EXPECT_EQ(table4_seek(table, "R"), 80);
    EXPECT_EQ(table4_seek_n(table, "R", 1), 80);
    EXPECT_EQ(table4_seek_double(table, 2.0), 80);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(boxes.count(), 0u);
    engine->error_code = -1;
    EXPECT_EQ(table4_seek(table, "R"), -1);
    EXPECT_EQ(table4_seek_double(table, 1), -1);
    engine->error_code = 0;
    EXPECT_EQ(table4_seek(nullptr, "R"), -1);
}

TEST_F(Table4Tag, ATagNameWithNoIndexFileOpenIsMinus330OrQuietlyNull) {
    EXPECT_EQ(table4_tag(table, "NAME"), nullptr);
    EXPECT_EQ(engine->error_code, -330);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-330, {"Tag Name not Found", "NAME"}));
    engine->error_code = 0;
    engine->err_tag = 0;
    EXPECT_EQ(table4_tag(table, "NAME"), nullptr);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(table4_tag_next(table, nullptr), nullptr);
    EXPECT_EQ(table4_tag_selected(table), nullptr);
    EXPECT_EQ(table4_tag_default(table), nullptr);
    EXPECT_EQ(table4_tag(nullptr, "NAME"), nullptr);
    EXPECT_EQ(table4_tag(table, nullptr), nullptr);
}

TEST_F(Table4Tag, TagsAreWalkedOverEveryIndexFileAndFoundByName) {
    FakeIndex empty(table, "X", "Y");
    empty.index.tag_list = l4list{};  // an index file without tags is passed over
    FakeIndex first(table, "NAME", "AMOUNT");
    FakeIndex second(table, "SEEN", "OK");
    l4_add(&table->index_list, &empty.index);
    l4_add(&table->index_list, &first.index);
    l4_add(&table->index_list, &second.index);
    EXPECT_EQ(table4_tag_next(table, nullptr), &first.tags[0]);
    EXPECT_EQ(table4_tag_next(table, &first.tags[0]), &first.tags[1]);
    EXPECT_EQ(table4_tag_next(table, &first.tags[1]), &second.tags[0]);
    EXPECT_EQ(table4_tag_next(table, &second.tags[1]), nullptr);
    EXPECT_EQ(table4_tag(table, "seen"), &second.tags[0]);
    EXPECT_EQ(table4_tag(table, "amount"), &first.tags[1]);
    EXPECT_EQ(table4_tag_default(table), &first.tags[0]);
    table4_tag_select(table, &second.tags[1]);
    EXPECT_EQ(table4_tag_selected(table), &second.tags[1]);
    EXPECT_EQ(table->index_list.selected, &second.index);
    EXPECT_EQ(table4_tag_default(table), &second.tags[1]);
    // A tag of another table is not taken.
    FakeIndex stranger(table, "Z", "W");
    table4_tag_select(table, &stranger.tags[0]);
    EXPECT_EQ(table4_tag_selected(table), &second.tags[1]);
    table4_tag_select(table, nullptr);
    EXPECT_EQ(table4_tag_selected(table), nullptr);
    EXPECT_EQ(table4_locked_all_index(table), 0);
    first.index.is_locked = 1;
    second.index.is_locked = 1;
    empty.index.file.is_exclusive = 1;
    EXPECT_EQ(table4_locked_all_index(table), 1);
    first.index.is_locked = second.index.is_locked = 0;
    table->index_list = l4list{};
}

TEST_F(Table4Tag, MovesInTheOrderOfASelectedTagGoThroughTheTag) {
    FakeIndex index(table, "NAME", "AMOUNT");
    l4_add(&table->index_list, &index.index);
    table4_tag_select(table, &index.tags[0]);
    ASSERT_EQ(table4_go(table, 2), 0);
    // The tag code answers each of these; without it each one fails.
    EXPECT_EQ(table4_top(table), -1);
    EXPECT_EQ(table4_bottom(table), -1);
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(table4_skip(table, 1), -1);
    EXPECT_EQ(table4_seek(table, "R"), -1);  // no key conversion
    EXPECT_EQ(engine->usage_flags & usage4_tag_skip, usage4_tag_skip);
    // Record number order again once the tag is let go.
    table4_tag_select(table, nullptr);
    EXPECT_EQ(table4_top(table), 0);
    EXPECT_EQ(table4_skip(table, 1), 0);
    EXPECT_EQ(table->record_number, 2);
    table->index_list = l4list{};
}

TEST_F(Table4Tag, WritesAndAppendsWithAnIndexOpenKeepTheKeysThroughTheTags) {
    FakeIndex index(table, "NAME", "AMOUNT");
    l4_add(&table->index_list, &index.index);
    ASSERT_EQ(table4_go(table, 2), 0);
    // An unchanged record: no key is touched and the write succeeds.
    table->record_changed = 1;
    EXPECT_EQ(table4_flush_record(table, 0), 0);
    // A changed one asks the tags for its keys, which the engine cannot give.
    column4_assign(table4_column(table, "NAME"), "changed");
    EXPECT_EQ(table4_flush_record(table, 0), -1);
    EXPECT_EQ(table->record_changed, 1);
    table->record_changed = 0;
    const int32_t count = table4_count(table);
    ASSERT_EQ(table4_append_start(table, 0), 0);
    EXPECT_EQ(table4_append(table), -1);
    EXPECT_EQ(table4_count(table), count);  // nothing appended
    EXPECT_EQ(table->record_number, 0);
    EXPECT_EQ(table->append_locked, 0);
    table->index_list = l4list{};
}

TEST_F(Table4Tag, TheIndexCallsOfAnEngineWithoutIndexCode) {
    EXPECT_EQ(i4open(table, nullptr), nullptr);
    EXPECT_EQ(engine->error_code, -1010);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text,
              box_text(-1010, {err4text(-1010), "File Name:", upper(path("T.CDX"))}));
    engine->error_code = 0;
    EXPECT_EQ(i4open(table, path("other").c_str()), nullptr);
    EXPECT_EQ(boxes.last().text,
              box_text(-1010, {err4text(-1010), "File Name:", upper(path("OTHER.CDX"))}));
    engine->error_code = 0;
    const tag_info tags[] = {{"NAME", "NAME", nullptr, 0, 0}, {nullptr, nullptr, nullptr, 0, 0}};
    EXPECT_EQ(index4_create(table, nullptr, tags), nullptr);
    EXPECT_EQ(engine->error_code, -1010);
    engine->error_code = 0;
    EXPECT_EQ(index4_create(table, nullptr, nullptr), nullptr);
    EXPECT_EQ(table4_reindex(table), 0);  // no index files: nothing to build
    EXPECT_EQ(table->index_list.count, 0u);
    EXPECT_EQ(index4_close(nullptr), 0);
    EXPECT_EQ(index4_lock(nullptr), -1);
    EXPECT_EQ(index4_unlock(nullptr), -1);
    EXPECT_EQ(index4_update(nullptr), -1);
    EXPECT_EQ(index4_flush(nullptr), -1);
    EXPECT_EQ(index4_version_check(nullptr, 1, 1), -1);
    EXPECT_EQ(index4_reindex(nullptr), -1);
    EXPECT_EQ(tag4_top(nullptr), -1);
    EXPECT_EQ(tag4_bottom(nullptr), -1);
    EXPECT_EQ(tag4_skip(nullptr, 3), 0);
    EXPECT_EQ(tag4_seek(nullptr, "x", 1), -1);
    EXPECT_EQ(tag4_go(nullptr, "x", 1), -1);
    EXPECT_EQ(tag4_eof(nullptr), 1);
    EXPECT_EQ(tag4_record(nullptr), -1);
    EXPECT_EQ(tag4_key(nullptr), nullptr);
    const char *key = "x";
    EXPECT_EQ(tag4_key_calc(nullptr, &key), -1);
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(tag4_filter_true(nullptr), -1);
    EXPECT_EQ(tag4_add(nullptr, "x", 1), -1);
    EXPECT_EQ(tag4_remove(nullptr, "x", 1), -1);
    EXPECT_EQ(tag4_add_calc(nullptr, 1), -1);
}

TEST_F(Table4Tag, AnIndexOnTheListIsLockedFlushedAndClosedWithTheTable) {
    nqtest::write_file(path("T.CDX"), std::string(1024, '\0'));
    index4 *index = static_cast<index4 *>(
        pool4_get(engine, &engine->index_pool, engine->index_start, sizeof(index4), engine->index_expand, 0));
    ASSERT_NE(index, nullptr);
    index->engine = engine;
    index->table = table;
    ASSERT_EQ(file4_open(&index->file, engine, path("T.CDX").c_str(), 1), 0);
    l4_add(&table->index_list, index);
    ASSERT_EQ(table4_lock_index(table), 0);
    EXPECT_EQ(index->is_locked, 1);
    EXPECT_EQ(table4_locked_all_index(table), 1);
    ASSERT_EQ(table4_lock(table, 1), 0);  // a record lock lets the index locks go
    EXPECT_EQ(index->is_locked, 0);
    ASSERT_EQ(table4_lock_all(table), 0);
    EXPECT_EQ(index->is_locked, 1);
    EXPECT_EQ(table4_flush(table), 0);
    EXPECT_EQ(table4_update(table), 0);
    EXPECT_EQ(table4_refresh(table), 0);
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(index->is_locked, 0);
    EXPECT_EQ(table4_reindex(table), -1010);
    engine->error_code = 0;
    EXPECT_EQ(table4_close(table), 0);
    table = nullptr;
    EXPECT_EQ(engine->index_pool->free_units.count, static_cast<uint32_t>(engine->index_start));
}

}  // namespace
