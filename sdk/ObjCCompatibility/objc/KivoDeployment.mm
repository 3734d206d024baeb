#import "Values.h"

#include <kivo/Deployment.hpp>
#import <kivo/objc/KivoDeployment.h>

#include <utility>

@implementation KivoDeployment

+ (void)installJoinPages:(NSArray<NSString*>*)joinPages faceTecProduction:(BOOL)faceTecProduction {
    kivo::Deployment deployment;
    for (NSUInteger i = 0; i < std::min<NSUInteger>([joinPages count], deployment.joinPages.size()); ++i) {
        deployment.joinPages[i] = kivo::objc::fromText([joinPages objectAtIndex:i]);
    }
    deployment.faceTecProduction = faceTecProduction;
    kivo::Deployment::install(std::move(deployment));
}

@end
