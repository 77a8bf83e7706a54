#include "search/regex_results_model_gtk.h"

#include <algorithm>

#include "common/utf.h"
#include "search/regex_window_rules.h"

namespace nebro::search {

namespace {

struct Rows {
  std::vector<RegexListSegment> segments;
  uint64_t stored = 0;
  uint64_t shown = 0;
};

struct ResultsModel {
  GObject parent;
  Rows* rows;
  gint stamp;
};

struct ResultsModelClass {
  GObjectClass parent;
};

void ResultsModelInterfaceInit(GtkTreeModelIface* iface);

G_DEFINE_TYPE_WITH_CODE(ResultsModel, nebro_regex_results_model, G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(GTK_TYPE_TREE_MODEL, ResultsModelInterfaceInit))

ResultsModel* Self(gpointer model) { return reinterpret_cast<ResultsModel*>(model); }

void Finalize(GObject* object) {
  delete Self(object)->rows;
  G_OBJECT_CLASS(nebro_regex_results_model_parent_class)->finalize(object);
}

void nebro_regex_results_model_class_init(ResultsModelClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = Finalize;
}

void nebro_regex_results_model_init(ResultsModel* self) {
  self->rows = new Rows();
  self->stamp = g_random_int();
}

GtkTreeModelFlags GetFlags(GtkTreeModel*) {
  return static_cast<GtkTreeModelFlags>(GTK_TREE_MODEL_LIST_ONLY | GTK_TREE_MODEL_ITERS_PERSIST);
}

gint GetNColumns(GtkTreeModel*) { return 1; }

GType GetColumnType(GtkTreeModel*, gint) { return G_TYPE_STRING; }

bool SetRow(ResultsModel* self, GtkTreeIter* iter, uint64_t row) {
  if (row >= self->rows->shown) return false;
  iter->stamp = self->stamp;
  iter->user_data = GSIZE_TO_POINTER(static_cast<gsize>(row));
  return true;
}

uint64_t RowOf(GtkTreeIter* iter) { return GPOINTER_TO_SIZE(iter->user_data); }

gboolean GetIter(GtkTreeModel* model, GtkTreeIter* iter, GtkTreePath* path) {
  if (gtk_tree_path_get_depth(path) != 1) return FALSE;
  const gint index = gtk_tree_path_get_indices(path)[0];
  return index >= 0 && SetRow(Self(model), iter, static_cast<uint64_t>(index));
}

GtkTreePath* GetPath(GtkTreeModel*, GtkTreeIter* iter) {
  return gtk_tree_path_new_from_indices(static_cast<gint>(RowOf(iter)), -1);
}

RegexListSegment* SegmentOf(Rows& rows, uint64_t row) {
  auto it = std::upper_bound(rows.segments.begin(), rows.segments.end(), row,
                             [](uint64_t r, const RegexListSegment& s) { return r < s.firstRow; });
  if (it == rows.segments.begin()) return nullptr;
  return &*(it - 1);
}

void GetValue(GtkTreeModel* model, GtkTreeIter* iter, gint, GValue* value) {
  g_value_init(value, G_TYPE_STRING);
  RegexListSegment* segment = nullptr;
  const RegexMatch* match = RegexResultsMatch(model, RowOf(iter), &segment);
  if (!match) return;
  std::string_view line;
  if (segment->outputFormat == 2 && segment->document) {
    RegexListDocument& doc = *segment->document;
    line = LineAround(doc.utf8, RegexListByteOffset(doc, static_cast<uint64_t>(match->start)));
  }
  const std::string text = RegexListEntryText(*match, segment->outputFormat, segment->includeLineNumbers, line);
  g_value_set_string(value, text.c_str());
}

gboolean IterNext(GtkTreeModel* model, GtkTreeIter* iter) { return SetRow(Self(model), iter, RowOf(iter) + 1); }

gboolean IterPrevious(GtkTreeModel* model, GtkTreeIter* iter) {
  const uint64_t row = RowOf(iter);
  return row > 0 && SetRow(Self(model), iter, row - 1);
}

gboolean IterChildren(GtkTreeModel* model, GtkTreeIter* iter, GtkTreeIter* parent) {
  return !parent && SetRow(Self(model), iter, 0);
}

gboolean IterHasChild(GtkTreeModel*, GtkTreeIter*) { return FALSE; }

gint IterNChildren(GtkTreeModel* model, GtkTreeIter* iter) {
  return iter ? 0 : static_cast<gint>(Self(model)->rows->shown);
}

gboolean IterNthChild(GtkTreeModel* model, GtkTreeIter* iter, GtkTreeIter* parent, gint n) {
  return !parent && n >= 0 && SetRow(Self(model), iter, static_cast<uint64_t>(n));
}

gboolean IterParent(GtkTreeModel*, GtkTreeIter*, GtkTreeIter*) { return FALSE; }

void ResultsModelInterfaceInit(GtkTreeModelIface* iface) {
  iface->get_flags = GetFlags;
  iface->get_n_columns = GetNColumns;
  iface->get_column_type = GetColumnType;
  iface->get_iter = GetIter;
  iface->get_path = GetPath;
  iface->get_value = GetValue;
  iface->iter_next = IterNext;
  iface->iter_previous = IterPrevious;
  iface->iter_children = IterChildren;
  iface->iter_has_child = IterHasChild;
  iface->iter_n_children = IterNChildren;
  iface->iter_nth_child = IterNthChild;
  iface->iter_parent = IterParent;
}

}  // namespace

bool IsAscii(std::string_view utf8) {
  unsigned char any = 0;
  for (const char c : utf8) any |= static_cast<unsigned char>(c);
  return any < 0x80;
}

uint64_t RegexListByteOffset(RegexListDocument& doc, uint64_t index) {
  const std::string_view text = doc.utf8;
  if (doc.ascii) return std::min<uint64_t>(index, text.size());
  if (index < doc.walkUnit || index - doc.walkUnit > (1u << 16)) {
    // Far away or behind: the checkpoints get there, and the walk goes on from there.
    doc.walkByte = Utf16IndexToUtf8Offset(text, doc.offsets, index);
    doc.walkUnit = index;
    return doc.walkByte;
  }
  while (doc.walkUnit < index && doc.walkByte < text.size()) {
    const auto b = static_cast<unsigned char>(text[doc.walkByte]);
    if (b < 0x80) {
      ++doc.walkByte;
      ++doc.walkUnit;
      continue;
    }
    size_t length = 1;
    const char32_t c = DecodeUtf8At(text, doc.walkByte, &length);
    const uint64_t units = c >= 0x10000 ? 2 : 1;
    if (doc.walkUnit + units > index) break;  // inside a surrogate pair: its character
    doc.walkByte += length;
    doc.walkUnit += units;
  }
  return doc.walkByte;
}

GtkTreeModel* NewRegexResultsModel() {
  return GTK_TREE_MODEL(g_object_new(nebro_regex_results_model_get_type(), nullptr));
}

void RegexResultsAppend(GtkTreeModel* model, RegexListSegment segment) {
  Rows& rows = *Self(model)->rows;
  if (segment.matches.empty()) return;
  segment.firstRow = rows.stored;
  rows.stored += segment.matches.size();
  rows.segments.push_back(std::move(segment));
}

uint64_t RegexResultsStored(GtkTreeModel* model) { return Self(model)->rows->stored; }
uint64_t RegexResultsShown(GtkTreeModel* model) { return Self(model)->rows->shown; }

void RegexResultsAnnounce(GtkTreeModel* model, uint64_t upTo) {
  ResultsModel* self = Self(model);
  upTo = std::min(upTo, self->rows->stored);
  while (self->rows->shown < upTo) {
    const uint64_t row = self->rows->shown++;
    GtkTreeIter iter;
    SetRow(self, &iter, row);
    GtkTreePath* path = gtk_tree_path_new_from_indices(static_cast<gint>(row), -1);
    gtk_tree_model_row_inserted(model, path, &iter);
    gtk_tree_path_free(path);
  }
}

void RegexResultsShowAllSilently(GtkTreeModel* model) { Self(model)->rows->shown = Self(model)->rows->stored; }

const RegexMatch* RegexResultsMatch(GtkTreeModel* model, uint64_t row, RegexListSegment** segment) {
  Rows& rows = *Self(model)->rows;
  if (row >= rows.shown) return nullptr;
  RegexListSegment* s = SegmentOf(rows, row);
  if (!s) return nullptr;
  if (segment) *segment = s;
  return &s->matches[row - s->firstRow];
}

}  // namespace nebro::search
