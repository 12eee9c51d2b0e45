find_package(Eigen3 3.3 REQUIRED NO_MODULE)
find_package(OpenCV REQUIRED COMPONENTS core imgproc imgcodecs calib3d)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
