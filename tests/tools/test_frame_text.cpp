// The two string helpers the frame needs: the duplicate and the path cut.
#include <gtest/gtest.h>

#include <string>

#include "nq_tls20an.h"

TEST(StrDup, CopiesIntoABlockOfTheManager) {
    nq_wchar *copy = nq_Str_dup(u"abc");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(std::u16string(copy), u"abc");
    nq_Free(copy);
    copy = nq_Str_dupW(u"");
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy[0], 0);
    nq_Free(copy);
}

TEST(StrDup, NullYieldsNull) {
    EXPECT_EQ(nq_Str_dup(nullptr), nullptr);
    EXPECT_EQ(nq_Str_dupW(nullptr), nullptr);
}

TEST(FnameRmvPath, KeepsTheLastComponentInPlace) {
    nq_wchar a[] = u"C:\\dir\\sub\\file.txt";
    EXPECT_EQ(nq_Fname_rmvPath(a), a);
    EXPECT_EQ(std::u16string(a), u"file.txt");
    nq_wchar b[] = u"D:name.dbf";
    EXPECT_EQ(std::u16string(nq_Fname_rmvPath(b)), u"name.dbf");
    nq_wchar c[] = u"plain";
    EXPECT_EQ(std::u16string(nq_Fname_rmvPath(c)), u"plain");
    nq_wchar d[] = u"/unix/path";  // the forward slash means nothing
    EXPECT_EQ(std::u16string(nq_Fname_rmvPath(d)), u"/unix/path");
    nq_wchar e[] = u"folder\\";
    EXPECT_EQ(std::u16string(nq_Fname_rmvPath(e)), u"");
    EXPECT_EQ(nq_Fname_rmvPath(nullptr), nullptr);
}

TEST(TraceOff, NothingIsComposedWhenTracingIsOff) {
    nq_Diag_disable();
    nq_wchar *buffer = nq_Diag_getDiagMsgBuf();
    buffer[0] = u'#';
    buffer[1] = 0;
    LnkList *list = nq_LnkList_create(nullptr);
    nq_LnkList_insEnd(list, list);
    int x = 1;
    nq_Array *array = nq_Array_create(1, sizeof x, &x);
    nq_Array_destroy(array, nullptr);
    nq_LnkList_destroy(list, nullptr);
    // Level 3 without the bits, and the bits at level 2: still nothing.
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_POINT);
    nq_LnkList_length(nullptr);
    nq_Diag_setLevel(2);
    nq_Diag_setCondition(NQ_DIAG_LNKLIST | NQ_DIAG_ARRAY);
    nq_Array_size(nullptr);
    EXPECT_EQ(std::u16string(buffer), u"#");
    nq_Diag_disable();
}
