// What is measured: a function a family adds its operations, with the peers from Fortran libraries.
#pragma once

#include "Harness.h"

namespace bench {

void addVectors(Suite& suite);
void addProducts(Suite& suite);
void addQr(Suite& suite);
void addLeastSquares(Suite& suite);
void addSurfaceFit(Suite& suite);
void addCholesky(Suite& suite);
void addLu(Suite& suite);
void addSymmetric(Suite& suite);
void addRightHandSides(Suite& suite);
void addSvd(Suite& suite);
void addEigenvalues(Suite& suite);
void addSmallContainers(Suite& suite);
void addArrays(Suite& suite);
void addTrees(Suite& suite);
void addLists(Suite& suite);
void addStructures(Suite& suite);
void addBoxes(Suite& suite);
void addSparse(Suite& suite);
void addUndo(Suite& suite);
void addTrace(Suite& suite);
void addCache(Suite& suite);
void addDrawLink(Suite& suite);
void addLoading(Suite& suite);

/// Adds Eigen to the above that it has, or says that it is missing: the line for the table's head.
std::string addEigen(Suite& suite);

/// The same for the trees of Boost and GLib.
std::string addBoost(Suite& suite);
std::string addGlib(Suite& suite);

/// The same for the log of spdlog.
std::string addSpdlog(Suite& suite);

/// Adds geometry with all of its peers. Returns a line for the table's head for each that is
/// missing.
std::vector<std::string> addGeometry(Suite& suite);

}  // namespace bench
