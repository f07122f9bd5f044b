// Values of every kind that debuggers are taught to show. At each call of `stop` printers.py looks
// at the variables of the caller, whose name is that of a section in expected.txt.
#include <cstddef>
#include <cstdint>
#include <vector>

#include <kilnbase/kilnbase.h>
#include <vx/Filename.h>
#include <vx/Mesh.h>
#include <vx/Uuid.h>

using vxKilnBase::Owned;

namespace {

[[gnu::noinline]] void stop(const void* values) {
  asm volatile("" : : "r"(values) : "memory");
}

struct Snapshot : vx::ReferenceCount {
  int value = 7;
};

void strings() {
  const vxString::CString name = "wing";
  const vxString::IString wide = L"wing";
  const vxString::CString none;
  const vxUtil::Error success;
  const vxUtil::Error failure(1, "no room");
  const vxUtil::Interval forever;
  const vxUtil::Interval pause(0.25);
  const vxOS::Filename path(name);
  const vxOS::URL url("file:///wing");
  const vxOS::Uuid uuid = vxOS::Uuid::generate();
  const vx::Reference<Snapshot> first(new Snapshot);
  const vx::Reference<Snapshot> second = first;
  const vx::Reference<Snapshot> null;
  const vx::vector<vxString::CString> words = {name, none};
  stop(&url);
}

void meshes() {
  const vxLinear::Vector direction{0.0, 2.0, 0.0};
  const vxLinear::Point2 parameters{0.5, 1.0};
  const vxLinear::ParamLine line({1.0, 0.0, 0.0}, direction);
  const vxLinear::Point middle = line.at(0.5);
  const vxGeom::CompactMesh mesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
  const vxGeom::TopoMesh topology({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
  stop(&line);
}

void vectors() {
  const DoubleVec v(5, 0.5, 1.0);
  const DoubleVec backward = v.slice(4, 3, -2);
  const DoubleVec empty;
  const DoubleVec many(1000, 1.0, 1.0);
  const IntVec ints(2, 7);
  const SCharVec chars(3, 65);
  const int places[] = {3, 0};
  const DoubleVecPick pick = v.vecPick(IntVec(places, 2));
  const Owned<DoubleVec> owned = DoubleVec(2, 9.0);
  const std::vector<Owned<DoubleVec>> rows(2, owned);
  const DoubleVec& reference = owned;
  stop(&reference);
}

void matrices() {
  const DoubleVec elements(6, 1.0, 1.0);
  const DoubleGenMat a = DoubleGenMat(elements, 2, 3).copy();
  const DoubleGenMat none;
  const DoubleGenMat wide(1, 300, 4.0);
  const IntGenMat ints(2, 1, 5);
  const int places[] = {2, 0};
  const DoubleGenMatPick pick = a.matPick(IntVec(places + 1, 1), IntVec(places, 2));
  const DoubleVec packed(3, 1.0, 1.0);
  const DoubleSymMat symmetric = DoubleSymMat(packed, 2, 2).copy();
  const DoubleLowerTriMat lower = DoubleLowerTriMat(packed, 2, 2).copy();
  const DoubleUpperTriMat upper = DoubleUpperTriMat(packed, 2, 2).copy();
  const Owned<DoubleGenMat> owned = a;
  stop(&owned);
}

void decompositions() {
  DoubleGenMat a(2, 2, 0.0);
  a(0, 0) = 4.0;
  a(1, 1) = 9.0;
  const DoubleGenFact lu(a, 1);
  const DoubleGenFact nothing;
  const DoubleGenFact singular(DoubleGenMat(2, 2, 0.0));
  const DoubleSymFact symmetric(DoubleSymMat(DoubleVec(3, 1.0), 2, 2));
  const DoubleChDecomp cholesky(a);
  const DoubleChDecomp notFactored;
  const DoubleQRDecomp qr(a);
  DoubleLeastSqQR fit(a);
  fit.setTolerance(1e-9);
  const DoubleSVDecomp svd(a);
  const DoubleSVDecomp noValues;
  const DoubleSymEig eigen(DoubleSymMat(DoubleVec(3, 1.0), 2, 2));
  stop(&fit);
}

void geometry() {
  const T3dDblPoint point(1.0, 2.0, 0.1);
  const T4dDblPoint weighted(1.0, 2.0, 3.0, 0.5);
  const T4dDblVector vector(0.0, 0.0, 1.0);
  const Tscale scale(2.0, 2.0, 2.0);
  const Tplane plane(weighted, vector, 0.0);
  const Tangle right(90.0);
  Tangle radians;
  radians.radians(0.5);
  const Tquaternion quaternion;
  const TunitQuaternion unit;
  const T4dDblMatrix matrix;
  TgenXformMatrix general;
  TxformMatrix transform;
  transform = vector;
  const TpostXformMatrix post;
  const TboundingBox box(DoubleVec(2, 0.0), DoubleVec(2, 1.5));
  const TboundingBox emptyBox;
  stop(&transform);
}

struct Layer : TdblLinkedListElement {
  explicit Layer(int n) : number(n) {}
  int number;
};

struct Layers : TgroupDLLists {
  Layers() : TgroupDLLists(2) { slot(1) = new TdblLinkedList; }
};

struct Weights : TautoArrayBase {
  explicit Weights(std::size_t n) : TautoArrayBase(sizeof(double), n) {}
};

void containers() {
  const TtupleVector curve(2, DoubleVec(6, 1.0, 1.0).copy());
  const TtupleMatrix grid(3, 1, 2, 0.5);
  TsparseMatrix sparse(3, 2);
  sparse.rows() = 3;
  sparse.addCol(DoubleVec(3, 1.0, 1.0), 0);
  TnumberSequence sequence;
  sequence.add(0.5, 2);
  TdoubleArray lengths(8);
  lengths.addLast(2.5);
  TcharPtrArray names(8);
  char wing[] = "wing";
  names.addLast(wing);
  T3dDblPointArray points(8);
  points.addLast(T3dDblPoint(1.0, 2.0, 3.0));
  Tarray untyped(sizeof(int), 8);
  const Weights weights(100);
  TdblLinkedList layers;
  layers.append(new Layer(1));
  layers.append(new Layer(2));
  const TdblLinkedList sameLayers = layers;
  const Layers groups;
  const Layer alone(3);
  stop(&curve);
}

struct Knot {
  MR_LinkNode link;
  double parameter;
};

struct Curve {
  MR_AvlNode node;
  std::int32_t id;
};

int compareIds(const void* a, const void* b) {
  return static_cast<const Curve*>(a)->id - static_cast<const Curve*>(b)->id;
}

void records() {
  StatusCode status = MR_ITEM_NOT_FOUND;
  Knot knots[2] = {{{}, 0.25}, {{}, 0.75}};
  MR_LinkList knotList = {nullptr};
  MR_LinkList noKnots = {nullptr};
  for (Knot& knot : knots) MR_ll_append(&knotList, &knot.link);
  MR_List names = {nullptr};
  char wing[] = "wing";
  MR_list_append(&names, wing);
  Curve curves[3] = {{{}, 3}, {{}, 1}, {{}, 2}};
  MR_AvlNode* tree = nullptr;
  for (Curve& curve : curves) MR_avl_insert(&tree, &curve.node, compareIds);
  MR_Array* array = MR_array_new(sizeof(double), 2, 4);
  const double length = 2.5;
  MR_array_put(array, 1, &length);
  MR_Pool* pool = MR_pool_new(100);
  MR_pool_alloc(pool, 24);
  const MR_Filename file("wing", PIX_DATA);
  const MR_Filename frame("shot.0007", PIX_DATA);
  MR_LinkNode ring[2] = {{&ring[1], &ring[1]}, {&ring[0], &ring[0]}};
  MR_LinkList ringList = {ring};
  stop(&status);
}

int showAll(void*) {
  return 1;
}

void structures() {
  StatusCode status = MR_NO_ERROR;
  char wing[] = "wing";
  char bonnet[] = "bonnet";
  char door[] = "door";
  DS_Structure* all[4];
  for (int kind = DS_DLIST; kind <= DS_ARRAY; ++kind) {
    DS_Structure* structure = DS_create_type(kind, &status, __LINE__, __FILE__);
    structure->comparator = Ds_string_comparator;
    for (char* text : {wing, bonnet, door}) structure->methods->add(structure, text, &status);
    all[kind - DS_DLIST] = structure;
  }
  all[1]->filter = showAll;
  DS_Structure* unknown = DS_create_type(77, &status, __LINE__, __FILE__);
  stop(unknown);
}

}  // namespace

int main() {
  strings();
  meshes();
  vectors();
  matrices();
  decompositions();
  geometry();
  containers();
  records();
  structures();
}
